// For systems without pseudo-terminals: a port that cannot be plugged in.

#include "virtualport.h"

#include <QSocketNotifier>

namespace Boardsim {

VirtualPort::VirtualPort(const QString &folder, const QString &name, QObject *parent)
    : SerialEnd(parent)
    , m_folder(folder)
    , m_link(name)
{
}

VirtualPort::~VirtualPort() = default;

bool VirtualPort::plug(QString *error)
{
    *error = QStringLiteral("virtual ports need a pseudo-terminal, which this system does not have");
    return false;
}

void VirtualPort::unplug()
{
}
void VirtualPort::write(const QByteArray &)
{
}
void VirtualPort::setReading(bool)
{
}
void VirtualPort::setStalled(bool)
{
}
VirtualPort::Statistics VirtualPort::statistics() const
{
    return m_statistics;
}

} // namespace Boardsim
