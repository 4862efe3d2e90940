#include "outgoingfiles.h"

#include <QDir>
#include <QFileInfo>

namespace {

QString whyNotReadable(const QString &name)
{
    const QFileInfo info(name);
    const QString shown = QDir::toNativeSeparators(name);
    if (!info.exists())
        return QStringLiteral("文件不存在：%1").arg(shown);
    if (info.isDir())
        return QStringLiteral("不能传输文件夹：%1").arg(shown);
    return QStringLiteral("文件无法读取：%1").arg(shown);
}

} // namespace

void OutgoingFiles::setNames(const QStringList &names)
{
    m_names = names;
    m_next = 0;
    m_confirmed = 0;
    m_file.close();
    m_file.setFileName(names.value(0));
}

void OutgoingFiles::forgetChanges()
{
    m_changed.clear();
    m_size = 0;
    m_sent = 0;
}

bool OutgoingFiles::openNext(QString *reason)
{
    m_file.close();
    const QString next = m_names.at(m_next);
    m_file.setFileName(next);
    // Anything but a regular file could block or never end.
    if (!QFileInfo(next).isFile() || !m_file.open(QIODevice::ReadOnly)) {
        *reason = whyNotReadable(next);
        return false;
    }
    ++m_next;
    m_size = m_file.size();
    m_time = QFileInfo(next).lastModified();
    m_sent = 0;
    return true;
}

bool OutgoingFiles::read(char *buffer, qint64 count)
{
    if (m_file.read(buffer, count) != count)
        return false;
    m_sent += count;
    return true;
}

void OutgoingFiles::checkForChange()
{
    const QFileInfo info(m_file.fileName());
    if (info.exists() && info.lastModified() != m_time)
        m_changed.append(m_file.fileName());
}
