// How QtTerminalWidget keeps its text in the document.

#include "loglayout.h"
#include "qtterminalwidget.h"
#include "selectionkeeper.h"
#include "settings.h"

#include <QScrollBar>
#include <QTextBlock>

namespace {

// Paragraphs above this length are stored as several blocks: drawing and
// inserting cost by the block.
constexpr int kLongestBlock = 2048;
constexpr int kLongestWord = 128; // that is kept in one block

} // namespace

// Appends text whose line ends are all "\n" as it stands, storing very long
// paragraphs as several blocks.
void QtTerminalWidget::appendText(const QString &text)
{
    m_bufferShown = false;
    QTextBlock block = document()->lastBlock();
    int inBlock = block.length() - 1;

    // Cut at the block length first; the cuts' places are marked afterwards.
    QString stored;
    stored.reserve(text.size() + text.size() / kLongestBlock + 1);
    QVector<int> cuts; // ordinal of the new blocks that continue a paragraph
    int ordinal = 0;
    int start = 0;
    while (start < text.size()) {
        int end = text.indexOf(QLatin1Char('\n'), start);
        const bool lineEnds = end >= 0;
        if (!lineEnds)
            end = text.size();
        while (inBlock + end - start > kLongestBlock) {
            int piece = qMax(0, kLongestBlock - inBlock);
            // Behind a space where there is one, so that no word is cut.
            const int space = text.lastIndexOf(QLatin1Char(' '), start + piece - 1);
            if (piece > 0 && space >= start && space > start + piece - kLongestWord)
                piece = space + 1 - start;
            else if (piece > 0 && text.at(start + piece - 1).isHighSurrogate())
                --piece;
            stored += text.midRef(start, piece);
            stored += QLatin1Char('\n');
            cuts.append(++ordinal);
            start += piece;
            inBlock = 0;
        }
        stored += text.midRef(start, end - start);
        inBlock += end - start;
        if (lineEnds) {
            stored += QLatin1Char('\n');
            ++ordinal;
            inBlock = 0;
        }
        start = end + 1;
    }

    const SelectionKeeper keeper(this);
    const int firstNew = block.blockNumber();
    QTextCursor cursor(document());
    cursor.beginEditBlock(); // outside of one, moving a cursor lays out its block
    cursor.setPosition(document()->characterCount() - 1);
    cursor.insertText(stored);
    cursor.endEditBlock();
    if (cuts.isEmpty())
        return;
    for (const int cut : qAsConst(cuts))
        LogLayout::setContinuation(document()->findBlockByNumber(firstNew + cut), true);
    logLayout()->recount(firstNew + cuts.first() - 1);
}

// The buffer's text and nothing else.
void QtTerminalWidget::showLogView()
{
    const ReceiveBuffer::Edit edit = m_receiveBuffer.update(Settings::instance().textCodec);
    if (m_bufferShown)
        applyEdit(edit);
    else
        replaceText(m_receiveBuffer.text());
    m_bufferShown = true;
}

void QtTerminalWidget::applyEdit(const ReceiveBuffer::Edit &edit)
{
    QTextCursor cursor(document());
    const int offset = verticalScrollBar()->value();
    {
        const SelectionKeeper keeper(this);
        const int end = document()->characterCount() - 1;
        cursor.beginEditBlock();
        cursor.setPosition(end - edit.backRemoved);
        cursor.setPosition(end, QTextCursor::KeepAnchor);
        cursor.insertText(edit.backInserted);
        cursor.endEditBlock();
    }
    const int linesAfterBack = document()->lineCount();
    if (edit.frontRemoved > 0 || !edit.frontInserted.isEmpty()) {
        cursor.beginEditBlock();
        cursor.setPosition(0);
        cursor.setPosition(edit.frontRemoved, QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
        cursor.insertText(edit.frontInserted);
        cursor.endEditBlock();
    }
    // Lines that left at the front must not move what the user is reading.
    const int gone = linesAfterBack - document()->lineCount();
    verticalScrollBar()->setValue(offset - static_cast<int>(gone * logLayout()->lineHeight()));
}

void QtTerminalWidget::replaceText(const QString &text)
{
    m_bufferShown = false;
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.select(QTextCursor::Document);
    cursor.removeSelectedText();
    cursor.insertText(text);
    cursor.endEditBlock();
    LogLayout::setContinuation(document()->firstBlock(), false);
}

// Drops the oldest paragraphs when more is held than the bounds allow.
void QtTerminalWidget::trimFront()
{
    const int characters = document()->characterCount();
    const int paragraphs = document()->blockCount();
    if (characters <= m_maxCharacters && paragraphs <= m_maxParagraphs)
        return;
    // Somewhat more than needed, so that it isn't done at every slice.
    const int keepCharacters = m_maxCharacters - m_maxCharacters / 64;
    const int keepParagraphs = m_maxParagraphs - m_maxParagraphs / 64;
    QTextBlock first = document()->findBlock(qMax(0, characters - keepCharacters));
    if (first.blockNumber() < paragraphs - keepParagraphs)
        first = document()->findBlockByNumber(paragraphs - keepParagraphs);
    if (first.blockNumber() == 0)
        return;

    // The row that a block before has begun goes as a whole.
    const int cut = first.position() + logLayout()->firstRowStart(first);
    const int rowsGone = first.firstLineNumber();
    const int offset = verticalScrollBar()->value();
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.setPosition(cut, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    cursor.endEditBlock();
    LogLayout::setContinuation(document()->firstBlock(), false);
    verticalScrollBar()->setValue(offset - static_cast<int>(rowsGone * logLayout()->lineHeight()));
}
