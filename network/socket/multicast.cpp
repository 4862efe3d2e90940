#include "multicast.h"

#include "peeraddress.h"
#include "socketerror.h"

#include <QDebug>
#include <QNetworkInterface>
#include <QRegularExpression>
#include <QUdpSocket>

namespace {

constexpr int kShownCharacters = 40;

// Empty where the interface can be used.
QString faultOf(const QNetworkInterface &device, const QString &name)
{
    if (!device.isValid())
        return QStringLiteral("网络接口%1不存在").arg(name);
    if (!device.flags().testFlag(QNetworkInterface::IsUp))
        return QStringLiteral("网络接口%1未启用").arg(device.humanReadableName());
    return {};
}

// Why the socket cannot join any group of the family.
QString faultOf(const QUdpSocket &socket, const QHostAddress &group)
{
    const QHostAddress local = socket.localAddress();
    if (local != QHostAddress::AnyIPv4 && local != QHostAddress::AnyIPv6 && local != QHostAddress::Any)
        return QStringLiteral("“本地IP地址”须为“所有网络接口”");
    if (local.protocol() != group.protocol())
        return QStringLiteral("不能同时加入IPv4和IPv6的组");
    return {};
}

QString joinOne(QUdpSocket *socket, const QHostAddress &group, const QNetworkInterface &device)
{
    const QString fault = faultOf(*socket, group);
    if (!fault.isEmpty())
        return fault;
    if (device.isValid() ? socket->joinMulticastGroup(group, device) : socket->joinMulticastGroup(group))
        return {};
    if (socket->error() != QAbstractSocket::UnknownSocketError)
        return socketErrorText(socket->error(), socket->errorString());
    qWarning().noquote() << "cannot join" << group.toString() << socket->errorString();
    return device.isValid() ? QStringLiteral("系统拒绝加入")
                            : QStringLiteral("系统拒绝加入，可能没有可用的网络接口");
}

} // namespace

namespace Multicast {

MulticastSettings fromText(const QString &text)
{
    static const QRegularExpression separators(QStringLiteral("[\\s,;，；、]+"));
    MulticastSettings settings;
    const QStringList parts = text.split(separators, Qt::SkipEmptyParts);
    for (const QString &part : parts) {
        const QHostAddress group = PeerAddress::fromText(part);
        if (!group.isMulticast())
            settings.noGroups.append(part);
        else if (!settings.groups.contains(group))
            settings.groups.append(group);
    }
    return settings;
}

QHostAddress addressFor(const MulticastSettings &settings, const QHostAddress &wanted)
{
    if (settings.groups.isEmpty() || wanted != QHostAddress::Any)
        return wanted;
    const bool isIpv4 = settings.groups.first().protocol() == QAbstractSocket::IPv4Protocol;
    return QHostAddress(isIpv4 ? QHostAddress::AnyIPv4 : QHostAddress::AnyIPv6);
}

Joined join(QUdpSocket *socket, const MulticastSettings &settings)
{
    Joined joined;
    for (const QString &text : settings.noGroups)
        joined.faults.append(QStringLiteral("%1：不是组播地址").arg(text.left(kShownCharacters)));
    if (settings.groups.isEmpty())
        return joined;
    QNetworkInterface device;
    if (!settings.interfaceName.isEmpty()) {
        device = QNetworkInterface::interfaceFromName(settings.interfaceName);
        const QString fault = faultOf(device, settings.interfaceName);
        if (!fault.isEmpty()) {
            joined.faults.append(fault);
            return joined;
        }
        socket->setMulticastInterface(device);
    }
    socket->setSocketOption(QAbstractSocket::MulticastTtlOption, settings.ttl);
    socket->setSocketOption(QAbstractSocket::MulticastLoopbackOption, settings.loopsBack ? 1 : 0);
    for (const QHostAddress &group : settings.groups) {
        const QString fault = joinOne(socket, group, device);
        if (fault.isEmpty())
            joined.groups.append(group.toString());
        else
            joined.faults.append(QStringLiteral("%1：%2").arg(group.toString(), fault));
    }
    return joined;
}

} // namespace Multicast
