#include "portname.h"

#include <QDir>
#include <QRegularExpression>

#include <algorithm>

namespace PortName {

QString fromEntry(const QString &entry)
{
    static const QRegularExpression comName(QStringLiteral("(COM\\d+)"));
    const QRegularExpressionMatch com = comName.match(entry);
    if (com.hasMatch())
        return com.captured(1);
#ifndef Q_OS_WIN
    static const QRegularExpression deviceName(
        QStringLiteral("^(/\\S+|(?:tty|cu\\.|rfcomm)[A-Za-z0-9._-]+|pts/\\d+)"));
    const QRegularExpressionMatch device = deviceName.match(entry);
    if (device.hasMatch())
        return device.captured(1);
#endif
    return {};
}

QString virtualFolder()
{
    return qEnvironmentVariable("KORVEX_VIRTUAL_PORTS");
}

QStringList virtualPorts()
{
    const QString folder = virtualFolder();
    if (folder.isEmpty())
        return {};
    static const QRegularExpression exactName(QStringLiteral("^COM\\d+$"));
    QStringList names;
    const QStringList links = QDir(folder).entryList(QDir::System | QDir::Files);
    for (const QString &name : links) {
        if (exactName.match(name).hasMatch() && QFileInfo::exists(folder + QLatin1Char('/') + name))
            names.append(name);
    }
    std::sort(names.begin(), names.end(), isBefore);
    return names;
}

bool isBefore(const QString &a, const QString &b)
{
    static const QRegularExpression parts(QStringLiteral("\\d+|\\D"));
    QRegularExpressionMatchIterator left = parts.globalMatch(a);
    QRegularExpressionMatchIterator right = parts.globalMatch(b);
    while (left.hasNext() && right.hasNext()) {
        const QString one = left.next().captured();
        const QString other = right.next().captured();
        const bool numbers = one.at(0).isDigit() && other.at(0).isDigit();
        const qulonglong number = numbers ? one.toULongLong() : 0;
        const qulonglong otherNumber = numbers ? other.toULongLong() : 0;
        if (number != otherNumber)
            return number < otherNumber;
        if (one != other)
            return one < other;
    }
    return right.hasNext();
}

QString device(const QString &portName)
{
    const QString folder = virtualFolder();
    if (!folder.isEmpty() && !portName.contains(QLatin1Char('/'))) {
        const QFileInfo link(folder + QLatin1Char('/') + portName);
        if (link.isSymLink())
            return link.symLinkTarget();
    }
    return portName;
}

QString deviceFile(const QString &portName)
{
    const QString name = device(portName);
    return name.startsWith(QLatin1Char('/')) ? name : QStringLiteral("/dev/") + name;
}

QString entry(const QString &portName, const QString &description)
{
    return portName + QLatin1Char(' ') + description;
}

} // namespace PortName
