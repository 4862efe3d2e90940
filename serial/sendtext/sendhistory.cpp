#include "sendhistory.h"

#include <QByteArrayList>

namespace {

QString quoted(QString text)
{
    text.replace(QLatin1String("\\"), QLatin1String("\\\\"));
    return text.replace(QLatin1Char('\n'), QLatin1String("\\n"));
}

QString unquoted(const QString &text)
{
    QString plain;
    for (int i = 0; i < text.size(); ++i) {
        const bool isQuoted = text.at(i) == QLatin1Char('\\') && i + 1 < text.size();
        const QChar character = isQuoted ? text.at(++i) : text.at(i);
        plain += isQuoted && character == QLatin1Char('n') ? QLatin1Char('\n') : character;
    }
    return plain;
}

} // namespace

bool SendHistory::add(const Entry &entry)
{
    if (entry.text.isEmpty() || entry.text.size() > maxLength ||
        (!m_entries.isEmpty() && m_entries.first() == entry))
        return false;
    const int before = m_entries.indexOf(entry);
    if (before >= 0)
        m_entries.remove(before);
    if (before < 0 || before >= m_added)
        ++m_added;
    m_entries.prepend(entry);
    m_removed.removeOne(entry);
    if (m_entries.size() > maxEntries)
        m_entries.resize(maxEntries);
    m_isChanged = true;
    return true;
}

void SendHistory::remove(const Entry &entry)
{
    const int at = m_entries.indexOf(entry);
    if (at < 0)
        return;
    m_entries.remove(at);
    if (at < m_added)
        --m_added;
    m_removed.append(entry);
    m_isChanged = true;
}

void SendHistory::clear()
{
    m_removed += m_entries;
    m_entries.clear();
    m_added = 0;
    m_isChanged = true;
}

void SendHistory::merge(const QByteArray &file)
{
    m_entries.resize(qMin(m_added, m_entries.size()));
    for (const QByteArray &bytes : file.split('\n')) {
        const QString line = QString::fromUtf8(bytes);
        const bool isHex = line.startsWith(QLatin1String("H "));
        if (!isHex && !line.startsWith(QLatin1String("T ")))
            continue;
        const Entry entry{unquoted(line.mid(2)), isHex};
        if (entry.text.isEmpty() || entry.text.size() > maxLength || m_entries.contains(entry) ||
            m_removed.contains(entry))
            continue;
        if (m_entries.size() == maxEntries)
            break;
        m_entries.append(entry);
    }
}

QByteArray SendHistory::write() const
{
    QByteArray file;
    for (const Entry &entry : m_entries)
        file += (entry.isHex ? "H " : "T ") + quoted(entry.text).toUtf8() + '\n';
    return file;
}

void SendHistory::setWritten()
{
    m_added = 0;
    m_removed.clear();
    m_isChanged = false;
}
