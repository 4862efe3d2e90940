#include "commandstore.h"

#include "apppaths.h"
#include "commandset.h"
#include "safefile.h"

#include <QDir>
#include <QFileInfo>

#include <functional>

namespace {

constexpr qint64 kMaxBytes = 64LL * 1024 * 1024;
const auto kSuffix = QStringLiteral(".csv");

QString folder()
{
    return AppPaths::confFolder() + QStringLiteral("/commands");
}

// Any name is possible, whatever the file system allows.
QString fileOf(const QString &name)
{
    return folder() + QLatin1Char('/') + QString::fromLatin1(name.toUtf8().toPercentEncoding()) + kSuffix;
}

// Of the form that is not taken yet.
QString freeName(const QString &form, const std::function<bool(const QString &)> &isTaken)
{
    for (int number = 2;; ++number) {
        const QString name = form.arg(number);
        if (!isTaken(name))
            return name;
    }
}

} // namespace

QStringList CommandStore::names() const
{
    QStringList names;
    const QFileInfoList files = QDir(folder()).entryInfoList({QLatin1Char('*') + kSuffix}, QDir::Files);
    for (const QFileInfo &file : files)
        names.append(QString::fromUtf8(QByteArray::fromPercentEncoding(file.completeBaseName().toLatin1())));
    names.sort();
    return names;
}

QVector<Command> CommandStore::read(const QString &name, QString *fault)
{
    QByteArray content;
    if (!SafeFile::read(fileOf(name), kMaxBytes, &content, fault))
        return {};
    m_contents[name] = content;
    if (content.isEmpty())
        return {};
    const CommandSet::Read read = CommandSet::fromCsv(content);
    if (read.fault.isEmpty())
        return read.commands;
    const QString kept = freeName(fileOf(name) + QStringLiteral(".bad%1"),
                                  [](const QString &file) { return QFileInfo::exists(file); });
    const bool isKept = QFile::rename(fileOf(name), kept);
    m_contents.remove(name);
    *fault = isKept ? QStringLiteral("%1；原文件保留为%2").arg(read.fault, QFileInfo(kept).fileName())
                    : read.fault;
    return {};
}

QString CommandStore::save(const QString &name, const QVector<Command> &commands, QString *reason)
{
    QByteArray present;
    if (!SafeFile::read(fileOf(name), kMaxBytes, &present, reason))
        return {};
    const QByteArray content = CommandSet::toCsv(commands);
    QString target = name;
    if (present != m_contents.value(name) && present != content && !present.isEmpty())
        target = freeName(name + QStringLiteral(" %1"),
                          [](const QString &other) { return QFileInfo::exists(fileOf(other)); });
    if (!SafeFile::write(fileOf(target), content, reason))
        return {};
    m_contents[target] = content;
    return target;
}

bool CommandStore::isOutdated(const QString &name) const
{
    QByteArray present;
    QString reason;
    return SafeFile::read(fileOf(name), kMaxBytes, &present, &reason) && present != m_contents.value(name);
}

bool CommandStore::remove(const QString &name)
{
    m_contents.remove(name);
    return QFile::remove(fileOf(name));
}

bool CommandStore::rename(const QString &name, const QString &to)
{
    if (QFileInfo::exists(fileOf(to)) || !QFile::rename(fileOf(name), fileOf(to)))
        return false;
    m_contents[to] = m_contents.take(name);
    return true;
}
