#include "sendlist.h"

#include "textcodec.h"

#include <limits>

namespace {

// What a line edit holds; a longer line was not written by a send list.
constexpr int kMaxRow = 32767;

constexpr int kBehindAll = std::numeric_limits<int>::max();

} // namespace

bool SendList::setRow(int index, const QString &text)
{
    if (m_rows.value(index) == text)
        return false;
    if (text.isEmpty())
        m_rows.remove(index);
    else
        m_rows.insert(index, text);
    m_changed.insert(index);
    return true;
}

bool SendList::isFilled(int page) const
{
    const auto first = m_rows.lowerBound(index(page, 0));
    return first != m_rows.constEnd() && first.key() < index(page + 1, 0);
}

bool SendList::clearPage(int page)
{
    bool changed = false;
    for (int place = 0; place < rowsPerPage; ++place)
        changed = setRow(index(page, place), QString()) || changed;
    return changed;
}

void SendList::removePage(int page)
{
    if (m_rows.isEmpty())
        return;
    const int last = m_rows.lastKey();
    for (int row = index(page, 0); row <= last; ++row)
        setRow(row, m_rows.value(row + rowsPerPage));
}

int SendList::lastFilledPage() const
{
    return m_rows.isEmpty() ? 0 : m_rows.lastKey() / rowsPerPage + 1;
}

int SendList::pageCount() const
{
    return qBound(minPages, lastFilledPage(), maxPages);
}

void SendList::read(const QByteArray &file)
{
    m_rows.clear();
    m_others.clear();
    const QString text = TextCodec::decodeFile(file);
    QStringList others; // in front of the next row
    int start = 0;
    while (start < text.size()) {
        int end = text.indexOf(QLatin1Char('\n'), start);
        if (end < 0)
            end = text.size();
        // A byte order mark would be part of a line here and not at the front of
        // the file, where the line may end up.
        while (start < end && text.at(start) == QChar::ByteOrderMark)
            ++start;
        readLine(text.midRef(start, end - start), &others);
        start = end + 1;
    }
    if (!others.isEmpty())
        m_others[kBehindAll] += others;
    m_changed.clear();
}

void SendList::readLine(const QStringRef &line, QStringList *others)
{
    const int separator = line.indexOf(QLatin1Char('#'));
    bool isNumber = false;
    const int rowIndex = line.left(separator).trimmed().toInt(&isNumber);
    QStringRef row = line.mid(separator + 1);
    while (row.endsWith(QLatin1Char('\r')))
        row.chop(1);
    if (separator < 0 || !isNumber || rowIndex < 0 || rowIndex >= maxPages * rowsPerPage ||
        row.size() > kMaxRow) {
        others->append(line.toString());
        return;
    }
    setRow(rowIndex, row.toString());
    if (!others->isEmpty())
        m_others[rowIndex] += *others;
    others->clear();
}

void SendList::merge(const QByteArray &file)
{
    SendList theirs;
    theirs.read(file);
    for (const int row : qAsConst(m_changed))
        theirs.setRow(row, m_rows.value(row));
    m_rows = theirs.m_rows;
    m_others = theirs.m_others;
}

QByteArray SendList::write() const
{
    QByteArray file;
    auto others = m_others.constBegin();
    const auto writeOthers = [&](int upTo) {
        for (; others != m_others.constEnd() && others.key() <= upTo; ++others)
            for (const QString &line : others.value())
                file += line.toUtf8() + '\n';
    };
    for (auto it = m_rows.constBegin(); it != m_rows.constEnd(); ++it) {
        writeOthers(it.key());
        file += QByteArray::number(it.key()) + '#' + it.value().toUtf8() + '\n';
    }
    writeOthers(kBehindAll);
    return file;
}
