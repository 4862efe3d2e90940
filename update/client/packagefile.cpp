#include "packagefile.h"

#include <QDir>
#include <QFileInfo>

bool PackageFile::begin(const QString &path)
{
    discard();
    m_size = 0;
    m_error.clear();
    m_file.setFileName(path);
    QDir().mkpath(QFileInfo(path).path());
    QFile::remove(path);
    if (m_file.open(QIODevice::WriteOnly | QIODevice::Append))
        return true;
    m_error = m_file.errorString();
    return false;
}

bool PackageFile::append(const QByteArray &bytes)
{
    if (m_file.write(bytes) != bytes.size() || !m_file.flush())
        m_error = m_file.errorString();
    else
        m_size += bytes.size();
    return m_error.isEmpty();
}

bool PackageFile::keep()
{
    m_file.close();
    const bool whole = m_error.isEmpty() && QFileInfo(m_file.fileName()).size() == m_size;
    if (whole)
        m_file.setFileName(QString()); // nothing to discard any more
    else
        discard();
    return whole;
}

void PackageFile::discard()
{
    m_file.close();
    if (!m_file.fileName().isEmpty())
        m_file.remove();
    m_file.setFileName(QString());
}
