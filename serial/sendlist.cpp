#include "serial/sendlist.h"

#include "app/textcodec.h"

namespace {

// Longer than any line edit can show or send; a line of that length was not
// written by a send list.
constexpr int kLongestRow = 32767;

} // namespace

bool SendList::setRow(int index, const QString &text)
{
    if (text.isEmpty())
        return m_rows.remove(index) > 0;
    QString &row = m_rows[index];
    if (row == text)
        return false;
    row = text;
    return true;
}

bool SendList::clearPage(int page)
{
    bool changed = false;
    for (int place = 0; place < rowsPerPage; ++place)
        changed = m_rows.remove(index(page, place)) > 0 || changed;
    return changed;
}

void SendList::removePage(int page)
{
    const int first = index(page, 0);
    QMap<int, QString> kept;
    for (auto it = m_rows.constBegin(); it != m_rows.constEnd(); ++it) {
        if (it.key() < first)
            kept.insert(it.key(), it.value());
        else if (it.key() >= first + rowsPerPage)
            kept.insert(it.key() - rowsPerPage, it.value());
    }
    m_rows = kept;
}

int SendList::pageCount() const
{
    const int needed = m_rows.isEmpty() ? 0 : m_rows.lastKey() / rowsPerPage + 1;
    return qBound(fewestPages, needed, mostPages);
}

void SendList::read(const QByteArray &file)
{
    m_rows.clear();
    const QString text = TextCodec::decodeFile(file);
    int start = 0;
    while (start < text.size()) {
        int end = text.indexOf(QLatin1Char('\n'), start);
        if (end < 0)
            end = text.size();
        QStringRef line = text.midRef(start, end - start);
        start = end + 1;
        while (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        const int separator = line.indexOf(QLatin1Char('#'));
        if (separator < 0)
            continue;
        bool isNumber = false;
        const int rowIndex = line.left(separator).trimmed().toInt(&isNumber);
        if (!isNumber || rowIndex < 0 || rowIndex >= mostPages * rowsPerPage)
            continue;
        const QString row = line.mid(separator + 1).left(kLongestRow).toString();
        setRow(rowIndex, row);
    }
}

QByteArray SendList::write() const
{
    QByteArray file;
    for (auto it = m_rows.constBegin(); it != m_rows.constEnd(); ++it)
        file += QByteArray::number(it.key()) + '#' + it.value().toUtf8() + '\n';
    return file;
}
