#include "portlist.h"

#include "portname.h"
#include "serialports.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSerialPortInfo>

namespace {

QString fourDigits(quint16 number)
{
    return QStringLiteral("%1").arg(number, 4, 16, QLatin1Char('0'));
}

QJsonObject described(const QString &entry)
{
    const QString name = PortName::fromEntry(entry);
    QJsonObject port{{QStringLiteral("name"), name},
                     {QStringLiteral("description"), entry.mid(name.size() + 1)}};
    const QSerialPortInfo info(name);
    const QString device = PortName::device(name);
    port.insert(QStringLiteral("device"), device != name || info.isNull() ? device : info.systemLocation());
    if (info.hasVendorIdentifier())
        port.insert(QStringLiteral("vendorId"), fourDigits(info.vendorIdentifier()));
    if (info.hasProductIdentifier())
        port.insert(QStringLiteral("productId"), fourDigits(info.productIdentifier()));
    if (!info.serialNumber().isEmpty())
        port.insert(QStringLiteral("serialNumber"), info.serialNumber());
    return port;
}

} // namespace

namespace PortList {

QByteArray text()
{
    QByteArray text;
    const QStringList entries = SerialPorts::entries();
    for (const QString &entry : entries)
        text += entry.trimmed().toUtf8() + '\n';
    return text;
}

QByteArray json()
{
    QJsonArray ports;
    const QStringList entries = SerialPorts::entries();
    for (const QString &entry : entries)
        ports.append(described(entry));
    return QJsonDocument(ports).toJson(QJsonDocument::Indented);
}

} // namespace PortList
