#include "logwindow.h"

#include "terminaldocument.h"

#include <QTextBlock>

namespace {

constexpr int kMaxBytes = 1024 * 1024; // of text brought in at a time, but for the last line of it

} // namespace

LogWindow::LogWindow(TerminalDocument *document, ReceivedText *received)
    : m_document(document)
    , m_received(received)
{
}

void LogWindow::clear()
{
    m_isDetached = false;
    m_isPartial = false;
    m_lastRow = -1;
}

qint64 LogWindow::rowCount() const
{
    return m_filter ? m_filter->lines().count() : m_received->lines().completeLines() + 1;
}

qint64 LogWindow::lastRow() const
{
    return takesChanges() ? rowCount() - 1 : m_lastRow;
}

qint64 LogWindow::firstRow() const
{
    return lastRow() - m_document->paragraphs() + 1;
}

qint64 LogWindow::rowOf(const QTextBlock &block) const
{
    return lastRow() - m_document->paragraphsBehind(block);
}

qint64 LogWindow::rowOf(qint64 line) const
{
    return m_filter ? m_filter->lines().countBelow(line) : line;
}

qint64 LogWindow::lineOf(qint64 row) const
{
    const bool isFiltered = m_filter && row >= 0 && row < m_filter->lines().count();
    return isFiltered ? m_filter->lines().at(row) : qMax<qint64>(0, row);
}

QTextBlock LogWindow::blockOf(qint64 row) const
{
    if (row < firstRow() || row > lastRow())
        return QTextBlock();
    return m_document->fromEnd(static_cast<int>(lastRow() - row));
}

int LogWindow::droppedOf(const QTextBlock &block) const
{
    if (block != m_document->firstBlock() || firstRow() < 0)
        return 0;
    const int length = m_received->lines().line(lineOf(firstRow())).size();
    return qMax(0, length - TerminalDocument::lengthOf(block));
}

LineStore::Extract LogWindow::extract(qint64 first) const
{
    return m_filter ? m_filter->extract(first, step(), kMaxBytes)
                    : m_received->lines().extract(first, step(), kMaxBytes);
}

bool LogWindow::showFrom(qint64 row)
{
    const LineStore::Extract rows = extract(row);
    if (rows.count == 0 && rowCount() > 1)
        return false;
    m_isDetached = !rows.isEnd;
    m_lastRow = row + rows.count - 1;
    m_isPartial = true;
    m_received->forgetShown();
    m_document->replace(QString());
    m_document->append(rows.text);
    return true;
}

bool LogWindow::showNewest(int rows)
{
    if (!showFrom(qMax<qint64>(0, rowCount() - (rows > 0 ? rows : step()))))
        return false;
    while (m_isDetached) { // long lines
        showNewer();
        m_document->dropOldest();
    }
    return true;
}

void LogWindow::showAround(qint64 row)
{
    showFrom(qMax<qint64>(0, row - step() / 2));
    while (m_isDetached && row > m_lastRow) {
        showNewer();
        m_document->dropOldest();
    }
}

int LogWindow::showOlder()
{
    const qint64 first = firstRow();
    if (first <= 0)
        return 0;
    // The limits would drop them again.
    if (!m_isDetached && !m_document->hasRoom(kMaxBytes, 2 * step())) {
        m_lastRow = lastRow();
        m_isDetached = true;
    }
    // The first row may have lost its beginning.
    const int kept = TerminalDocument::lengthOf(m_document->firstBlock());
    const QString begin = droppedOf(m_document->firstBlock()) > 0
                              ? m_received->lines().line(lineOf(first)).chopped(kept)
                              : QString();
    const LineStore::Extract rows = m_filter ? m_filter->extractBefore(first, step())
                                             : m_received->lines().extractBefore(first, step(), kMaxBytes);
    if (rows.count == 0)
        return 0;
    const int before = m_document->lineCount();
    m_document->prepend(rows.text + begin);
    const int added = m_document->lineCount() - before;
    if (m_isDetached) {
        m_document->dropNewest();
        m_lastRow = first - rows.count + m_document->paragraphs() - 1;
    }
    return added;
}

void LogWindow::showNewer()
{
    if (!m_isDetached)
        return;
    const LineStore::Extract rows = extract(m_lastRow);
    const QTextBlock last = m_document->fromEnd(0);
    const QString shown = m_document->textBetween(last.position(), m_document->characterCount() - 1);
    const bool goesOn = rows.text.startsWith(shown);
    m_lastRow += qMax(0, rows.count - 1);
    m_isDetached = !rows.isEnd;
    m_received->forgetShown();
    if (!goesOn) // it was overwritten meanwhile
        m_document->removeEnd(shown.size());
    m_document->append(goesOn ? rows.text.mid(shown.size()) : rows.text);
}

bool LogWindow::appendFiltered(bool follows)
{
    if (m_isDetached || rowCount() - 1 <= m_lastRow)
        return true;
    const bool isTooMuch = m_lastRow < 0 || rowCount() - m_lastRow > step();
    if (isTooMuch && (follows || m_lastRow < 0))
        return false;
    m_isDetached = true;
    if (isTooMuch)
        return true;
    showNewer();
    return true;
}

QString LogWindow::text() const
{
    if (!m_isPartial && takesChanges())
        return m_document->text();
    return m_received->lines().tail(m_document->maxCharacters(), m_document->maxParagraphs());
}
