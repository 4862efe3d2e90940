#include "terminaldocument.h"

#include "loglayout.h"

#include <QTextBlock>
#include <QTextCursor>

namespace {

// Longer paragraphs are stored as several blocks: drawing and inserting cost by
// the block.
constexpr int kMaxBlock = 2048;
constexpr int kMaxWord = 128; // that is kept in one block

// Some hundred thousand lines to scroll back in. More would make the document's
// own clean-up (it copies all text now and then) a stall that is felt.
constexpr int kMaxCharacters = 8 * 1024 * 1024;
constexpr int kMaxParagraphs = 200 * 1000;

// Characters from a position that one block holds: up to a space where one is
// near, so that no word is cut.
int pieceOf(const QString &text, int start, int room)
{
    if (room <= 0)
        return 0;
    const int space = text.lastIndexOf(QLatin1Char(' '), start + room - 1);
    if (space >= start && space > start + room - kMaxWord)
        return space + 1 - start;
    return text.at(start + room - 1).isHighSurrogate() ? room - 1 : room;
}

} // namespace

TerminalDocument::TerminalDocument(const QFont &font, QObject *parent)
    : QTextDocument(parent)
    , m_maxCharacters(kMaxCharacters)
    , m_maxParagraphs(kMaxParagraphs)
{
    setUndoRedoEnabled(false);
    setDefaultFont(font);
    m_layout = new LogLayout(this);
    setDocumentLayout(m_layout);
}

void TerminalDocument::setLimits(int characters, int paragraphs)
{
    m_maxCharacters = characters;
    m_maxParagraphs = paragraphs;
}

TerminalDocument::Stored TerminalDocument::storedForm(const QString &text, int inBlock)
{
    Stored stored;
    stored.text.reserve(text.size() + text.size() / kMaxBlock + 1);
    int block = 0;
    for (int start = 0; start < text.size();) {
        int end = text.indexOf(QLatin1Char('\n'), start);
        const bool lineEnds = end >= 0;
        if (!lineEnds)
            end = text.size();
        while (inBlock + end - start > kMaxBlock) {
            const int piece = pieceOf(text, start, kMaxBlock - inBlock);
            stored.text += text.midRef(start, piece);
            stored.text += QLatin1Char('\n');
            stored.cuts.append(++block);
            start += piece;
            inBlock = 0;
        }
        stored.text += text.midRef(start, end - start);
        inBlock += end - start;
        if (lineEnds) {
            stored.text += QLatin1Char('\n');
            ++block;
            inBlock = 0;
        }
        start = end + 1;
    }
    return stored;
}

void TerminalDocument::append(const QString &text)
{
    const int firstNew = blockCount() - 1;
    const Stored stored = storedForm(text, lastBlock().length() - 1);
    replaceEnd(0, stored.text);
    if (stored.cuts.isEmpty())
        return;
    for (const int cut : stored.cuts)
        LogLayout::setContinuation(findBlockByNumber(firstNew + cut), true);
    m_layout->recount(firstNew + stored.cuts.first() - 1);
}

void TerminalDocument::replace(const QString &text)
{
    replaceEnd(characterCount() - 1, text);
    LogLayout::setContinuation(firstBlock(), false);
}

void TerminalDocument::replaceFront(int characters, const QString &text)
{
    QTextCursor cursor(this);
    cursor.beginEditBlock(); // outside of one, moving a cursor lays out its block
    cursor.setPosition(0);
    cursor.setPosition(characters, QTextCursor::KeepAnchor);
    cursor.insertText(text);
    cursor.endEditBlock();
    LogLayout::setContinuation(firstBlock(), false);
}

void TerminalDocument::replaceEnd(int characters, const QString &text)
{
    const int end = characterCount() - 1;
    QTextCursor cursor(this);
    cursor.beginEditBlock();
    cursor.setPosition(end - characters);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    cursor.insertText(text);
    cursor.endEditBlock();
}

// The number of the first block to keep, somewhat more than needed, so that
// blocks are not dropped at every piece of text; 0 below the limits.
int TerminalDocument::blockToKeep() const
{
    if (characterCount() <= m_maxCharacters && blockCount() <= m_maxParagraphs)
        return 0;
    const int characters = m_maxCharacters - m_maxCharacters / 64;
    const int paragraphs = m_maxParagraphs - m_maxParagraphs / 64;
    const int atCharacter = findBlock(qMax(0, characterCount() - characters)).blockNumber();
    return qMax(atCharacter, blockCount() - paragraphs);
}

void TerminalDocument::dropOldest()
{
    const QTextBlock first = findBlockByNumber(blockToKeep());
    // A row that began in an earlier block is removed completely.
    if (first.position() > 0)
        replaceFront(first.position() + m_layout->firstRowStart(first), QString());
}

QString TerminalDocument::textBetween(int start, int end) const
{
    QString text;
    text.reserve(qMax(0, end - start));
    for (QTextBlock block = findBlock(start); block.isValid() && block.position() < end;
         block = block.next()) {
        if (block.position() > start && !LogLayout::isContinuation(block))
            text += QLatin1Char('\n');
        const QString line = block.text();
        const int from = qMax(0, start - block.position());
        text += line.midRef(from, qMin(line.size(), end - block.position()) - from);
    }
    // The end of the last paragraph belongs to the text when it is inside.
    const QTextBlock last = findBlock(end);
    if (last.isValid() && last.position() == end && end > start && !LogLayout::isContinuation(last))
        text += QLatin1Char('\n');
    return text;
}
