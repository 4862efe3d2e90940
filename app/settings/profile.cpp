#include "profile.h"

#include "apppaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

namespace {

const auto kName = QStringLiteral("Profile/Name");
const auto kPage = QStringLiteral("Profile/Page");
const auto kSuffix = QStringLiteral(".ini");
constexpr qint64 kMaxBytes = 1024 * 1024;

QString folder()
{
    return AppPaths::confFolder() + QStringLiteral("/profiles");
}

} // namespace

bool Profile::readFrom(const QString &fileName, QString *reason)
{
    const QFileInfo info(fileName);
    if (!info.isFile() || !info.isReadable()) {
        *reason = QStringLiteral("文件不存在或无法读取");
        return false;
    }
    QSettings file(fileName, QSettings::IniFormat);
    file.setIniCodec("UTF-8");
    const QString storedName = info.size() > kMaxBytes ? QString() : file.value(kName).toString().trimmed();
    const QString storedPage = file.value(kPage).toString();
    if (file.status() != QSettings::NoError || storedName.isEmpty() || storedPage.isEmpty()) {
        *reason = QStringLiteral("不是有效的方案文件");
        return false;
    }
    name = storedName.left(ProfileStore::maxNameLength);
    page = storedPage;
    values.clear();
    const QStringList keys = file.allKeys();
    for (const QString &key : keys)
        if (key != kName && key != kPage)
            values.insert(key, file.value(key));
    return true;
}

bool Profile::writeTo(const QString &fileName, QString *reason) const
{
    QSettings file(fileName, QSettings::IniFormat);
    file.setIniCodec("UTF-8");
    file.clear();
    file.setValue(kName, name);
    file.setValue(kPage, page);
    for (auto value = values.begin(); value != values.end(); ++value)
        file.setValue(value.key(), value.value());
    file.sync();
    if (file.status() == QSettings::NoError)
        return true;
    *reason = QStringLiteral("没有权限或磁盘空间不足");
    return false;
}

ProfileStore::ProfileStore(const QString &page)
    : m_page(page)
{
}

// Any name is possible, whatever the file system allows.
QString ProfileStore::fileOf(const QString &name) const
{
    const QByteArray encoded = (m_page + QLatin1Char('-') + name).toUtf8().toPercentEncoding();
    return folder() + QLatin1Char('/') + QString::fromLatin1(encoded) + kSuffix;
}

QStringList ProfileStore::names() const
{
    QStringList names;
    const QFileInfoList files = QDir(folder()).entryInfoList({QLatin1Char('*') + kSuffix}, QDir::Files);
    for (const QFileInfo &file : files) {
        const QString both =
            QString::fromUtf8(QByteArray::fromPercentEncoding(file.completeBaseName().toLatin1()));
        if (both.startsWith(m_page + QLatin1Char('-')))
            names.append(both.mid(m_page.size() + 1));
    }
    names.sort();
    return names;
}

bool ProfileStore::contains(const QString &name) const
{
    return QFileInfo::exists(fileOf(name));
}

bool ProfileStore::read(const QString &name, Profile *profile, QString *reason) const
{
    return profile->readFrom(fileOf(name), reason);
}

bool ProfileStore::save(const Profile &profile, QString *reason) const
{
    if (!QDir().mkpath(folder())) {
        *reason = QStringLiteral("无法创建文件夹");
        return false;
    }
    return profile.writeTo(fileOf(profile.name), reason);
}

bool ProfileStore::remove(const QString &name) const
{
    return QFile::remove(fileOf(name));
}
