#include "portfault.h"

#include <QFileInfo>

namespace {

QString refusedText(const QString &device)
{
#ifndef Q_OS_WIN
    const QFileInfo file(device.startsWith(QLatin1Char('/')) ? device : QStringLiteral("/dev/") + device);
    if (!file.isReadable() || !file.isWritable())
        return QStringLiteral("没有访问该串口的权限，请把当前用户加入dialout组并重新登录");
#else
    Q_UNUSED(device)
#endif
    return QStringLiteral("串口正被其他程序占用，请关闭该程序后重试");
}

} // namespace

QString PortFault::text(QSerialPort::SerialPortError error, const QString &device)
{
    switch (error) {
    case QSerialPort::NoError:
        return {};
    case QSerialPort::DeviceNotFoundError:
        return QStringLiteral("串口不存在，请检查设备是否已插好");
    case QSerialPort::PermissionError:
        return refusedText(device);
    case QSerialPort::OpenError:
        return QStringLiteral("串口已经打开");
    case QSerialPort::ResourceError:
    case QSerialPort::ReadError:
    case QSerialPort::WriteError:
        return QStringLiteral("设备没有响应，可能已拔出或发生故障");
    case QSerialPort::UnsupportedOperationError:
        return QStringLiteral("设备不是可用的串口，或不支持所选的参数");
    case QSerialPort::NotOpenError:
        return QStringLiteral("串口未打开");
    default:
        return QStringLiteral("设备不是可用的串口");
    }
}
