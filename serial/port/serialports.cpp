#include "serialports.h"

#include "portname.h"

#include <QFileInfo>
#include <QSerialPortInfo>

#include <algorithm>

#if defined(Q_OS_WIN)
#include <qt_windows.h>
#elif defined(Q_OS_LINUX)
#include <dirent.h>
#endif

namespace {

constexpr int kQueriesAfterChange = 3;

// Something that changes whenever a device comes or goes; empty where there is
// no cheap way to tell.
#if defined(Q_OS_WIN)
// Drivers enter their ports there: the device's name, and the port's as value.
QByteArray deviceListing()
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"HARDWARE\\DEVICEMAP\\SERIALCOMM", 0, KEY_QUERY_VALUE, &key) !=
        ERROR_SUCCESS)
        return {};
    QByteArray listing;
    wchar_t name[256];
    char value[512];
    for (DWORD i = 0;; ++i) {
        DWORD nameSize = 256; // characters
        DWORD valueSize = sizeof value;
        if (RegEnumValueW(key, i, name, &nameSize, nullptr, nullptr, reinterpret_cast<BYTE *>(value),
                          &valueSize) != ERROR_SUCCESS)
            break;
        listing.append(reinterpret_cast<const char *>(name), static_cast<int>(nameSize * sizeof(wchar_t)));
        listing.append(value, static_cast<int>(valueSize));
    }
    RegCloseKey(key);
    return listing;
}
#elif defined(Q_OS_LINUX)
QByteArray deviceListing()
{
    QByteArray names;
    if (DIR *folder = opendir("/sys/class/tty")) {
        while (const dirent *item = readdir(folder)) {
            names += item->d_name;
            names += '/';
        }
        closedir(folder);
    }
    return names;
}
#else
QByteArray deviceListing()
{
    return {};
}
#endif

// A query takes several milliseconds, and the port watch runs once a second: the
// system is queried only when a device has come or gone, and a few times after
// that, because descriptions are known later than devices. Those of the devices
// that were there before the program are known.
class SystemPorts
{
public:
    QVector<SerialPorts::Port> ports()
    {
        const QByteArray listing = deviceListing();
        if (listing != m_listing)
            m_queriesLeft = m_listing.isEmpty() ? 1 : kQueriesAfterChange;
        m_listing = listing;
        if (listing.isEmpty() || m_queriesLeft > 0)
            query();
        return m_ports;
    }

    void refresh() { m_queriesLeft = qMax(1, m_queriesLeft); }

private:
    void query()
    {
        m_queriesLeft = qMax(0, m_queriesLeft - 1);
        QList<QSerialPortInfo> infos = QSerialPortInfo::availablePorts();
        std::sort(infos.begin(), infos.end(), [](const QSerialPortInfo &a, const QSerialPortInfo &b) {
            return PortName::isBefore(a.portName(), b.portName());
        });
        m_ports.clear();
        for (const QSerialPortInfo &info : qAsConst(infos))
            m_ports.append({info.portName(),
                            info.description(),
                            {info.vendorIdentifier(), info.productIdentifier(), info.serialNumber()}});
    }

    QByteArray m_listing;
    QVector<SerialPorts::Port> m_ports;
    int m_queriesLeft = 0;
};

SystemPorts &systemPorts()
{
    static SystemPorts ports;
    return ports;
}

} // namespace

namespace SerialPorts {

QVector<Port> ports()
{
    QVector<Port> list;
    const QStringList virtualPorts = PortName::virtualPorts();
    for (const QString &name : virtualPorts)
        list.append({name, QStringLiteral("虚拟串口"), {}});
    return list + systemPorts().ports();
}

QStringList entries()
{
    QStringList list;
    const QVector<Port> all = ports();
    for (const Port &port : all)
        list.append(PortName::entry(port.name, port.description));
    return list;
}

QString find(const QString &name, const Identity &identity, const QVector<Port> &ports)
{
    for (const Port &port : ports)
        if (port.name == name)
            return identity.isNull() || port.identity.isNull() || port.identity == identity ? name
                                                                                            : QString();
    for (const Port &port : ports)
        if (identity.isUnique() && port.identity == identity)
            return port.name;
    return isPresent(name) ? name : QString(); // of a kind that the system does not list
}

bool isPresent(const QString &name)
{
#ifdef Q_OS_WIN
    const QVector<Port> all = ports();
    return std::any_of(all.begin(), all.end(), [&name](const Port &port) { return port.name == name; });
#else
    return QFileInfo::exists(PortName::deviceFile(name));
#endif
}

bool mayBlock(const QString &name)
{
#ifdef Q_OS_WIN
    const QVector<Port> all = ports();
    return std::any_of(all.begin(), all.end(), [&name](const Port &port) {
        return port.name == name &&
               (port.description.contains(QLatin1String("Bluetooth"), Qt::CaseInsensitive) ||
                port.description.contains(QStringLiteral("蓝牙")));
    });
#else
    return PortName::deviceFile(name).section(QLatin1Char('/'), -1).startsWith(QLatin1String("rfcomm"));
#endif
}

Identity identityOf(const QString &name)
{
    const QVector<Port> all = ports();
    for (const Port &port : all)
        if (port.name == name)
            return port.identity;
    return {};
}

void refresh()
{
    systemPorts().refresh();
}

} // namespace SerialPorts
