#include "serialports.h"

#include "portname.h"

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
QStringList systemEntries()
{
    static QByteArray known;
    static QStringList list;
    static int queriesLeft = 0;
    const QByteArray listing = deviceListing();
    if (listing != known)
        queriesLeft = known.isEmpty() ? 1 : kQueriesAfterChange;
    if (!listing.isEmpty() && queriesLeft == 0)
        return list;
    queriesLeft = qMax(0, queriesLeft - 1);
    known = listing;
    list.clear();
    QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    std::sort(ports.begin(), ports.end(), [](const QSerialPortInfo &a, const QSerialPortInfo &b) {
        return PortName::isBefore(a.portName(), b.portName());
    });
    for (const QSerialPortInfo &port : ports)
        list.append(PortName::entry(port.portName(), port.description()));
    return list;
}

} // namespace

namespace SerialPorts {

QStringList entries()
{
    QStringList list;
    const QStringList virtualPorts = PortName::virtualPorts();
    for (const QString &name : virtualPorts)
        list.append(PortName::entry(name, QStringLiteral("虚拟串口")));
    return list + systemEntries();
}

} // namespace SerialPorts
