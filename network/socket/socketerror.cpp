#include "socketerror.h"

#include <QDebug>

QString socketErrorText(QAbstractSocket::SocketError error, const QString &systemText)
{
    switch (error) {
    case QAbstractSocket::ConnectionRefusedError:
        return QStringLiteral("对方拒绝连接");
    case QAbstractSocket::RemoteHostClosedError:
        return QStringLiteral("对方已断开连接");
    case QAbstractSocket::HostNotFoundError:
        return QStringLiteral("找不到该主机");
    case QAbstractSocket::SocketTimeoutError:
        return QStringLiteral("连接超时");
    case QAbstractSocket::NetworkError:
        return QStringLiteral("网络不可达或连接被重置");
    case QAbstractSocket::SocketAccessError:
        return QStringLiteral("没有权限使用该端口");
    case QAbstractSocket::AddressInUseError:
        return QStringLiteral("端口已被占用");
    case QAbstractSocket::SocketAddressNotAvailableError:
        return QStringLiteral("该地址不属于本机");
    case QAbstractSocket::DatagramTooLargeError:
        return QStringLiteral("数据报过长");
    case QAbstractSocket::SocketResourceError:
        return QStringLiteral("系统资源不足");
    case QAbstractSocket::UnsupportedSocketOperationError:
        return QStringLiteral("系统不支持该协议或操作");
    case QAbstractSocket::ProxyConnectionRefusedError:
    case QAbstractSocket::ProxyConnectionClosedError:
    case QAbstractSocket::ProxyConnectionTimeoutError:
    case QAbstractSocket::ProxyNotFoundError:
    case QAbstractSocket::ProxyProtocolError:
    case QAbstractSocket::ProxyAuthenticationRequiredError:
        return QStringLiteral("代理服务器无法连接");
    default:
        qWarning().noquote() << "socket error" << error << systemText;
        return QStringLiteral("系统错误，代码%1").arg(error);
    }
}

QString openErrorText(QAbstractSocket::SocketError error, const QString &systemText, const QString &tool)
{
    const QString text = socketErrorText(error, systemText);
    if (error != QAbstractSocket::AddressInUseError || tool.isEmpty())
        return text;
    return QStringLiteral("%1：%2正在使用该端口").arg(text, tool);
}

QString SocketResource::tcp(quint16 port)
{
    return QStringLiteral("TCP %1").arg(port);
}

QString SocketResource::udp(quint16 port)
{
    return QStringLiteral("UDP %1").arg(port);
}
