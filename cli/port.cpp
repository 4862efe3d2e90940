#include "port.h"

#include "portname.h"
#include "seriallink.h"

#include <QUrl>

std::optional<Port> Port::fromText(const QString &text)
{
    Port port;
    port.m_name = text;
    if (!text.contains(QLatin1String("://"))) {
        port.m_serial.name = PortName::fromEntry(text);
        return port;
    }
    const QUrl url(text, QUrl::StrictMode);
    const bool isPlain =
        url.userInfo().isEmpty() && url.path().isEmpty() && !url.hasQuery() && !url.hasFragment();
    if (!url.isValid() || url.scheme() != QLatin1String("tcp") || url.host().isEmpty() || url.port() < 1 ||
        !isPlain)
        return {};
    port.m_server.host = url.host();
    port.m_server.port = static_cast<quint16>(url.port());
    return port;
}

std::unique_ptr<Link> Port::makeLink() const
{
    if (isSerial())
        return std::make_unique<SerialLink>();
    return std::make_unique<TcpClientLink>();
}

bool Port::open(Link *link) const
{
    if (isSerial())
        return static_cast<SerialLink *>(link)->open(m_serial);
    return static_cast<TcpClientLink *>(link)->open(m_server);
}
