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

bool TerminalDocument::hasRoom(int characters, int paragraphs) const
{
    return characterCount() + characters <= m_maxCharacters && blockCount() + paragraphs <= m_maxParagraphs;
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
    markCuts(stored, firstNew);
}

void TerminalDocument::prepend(const QString &lines)
{
    const Stored stored = storedForm(lines, 0);
    replaceFront(0, stored.text);
    markCuts(stored, 0);
}

void TerminalDocument::markCuts(const Stored &stored, int firstBlock)
{
    if (stored.cuts.isEmpty())
        return;
    m_hasLong = true;
    for (const int cut : stored.cuts)
        LogLayout::setContinuation(findBlockByNumber(firstBlock + cut), true);
    m_layout->recount(firstBlock + stored.cuts.first() - 1);
}

void TerminalDocument::replace(const QString &text)
{
    replaceEnd(characterCount() - 1, text);
    LogLayout::setContinuation(firstBlock(), false);
    m_hasLong = false;
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
    const QTextBlock block = findBlock(end - characters);
    const int number = block.blockNumber();
    const bool continues = LogLayout::isContinuation(block);
    QTextCursor cursor(this);
    cursor.beginEditBlock();
    cursor.setPosition(end - characters);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    cursor.insertText(text);
    cursor.endEditBlock();
    // Of blocks that become one, the state of the last one stays.
    if (LogLayout::isContinuation(findBlockByNumber(number)) == continues)
        return;
    LogLayout::setContinuation(findBlockByNumber(number), continues);
    m_layout->recount(number);
}

void TerminalDocument::removeEnd(int characters)
{
    QTextBlock block = lastBlock();
    while (characters > block.length() - 1 && LogLayout::isContinuation(block)) {
        characters -= block.length() - 1;
        block = block.previous();
    }
    const int position = block.position() + block.length() - 1 - qMin(characters, block.length() - 1);
    if (position < characterCount() - 1)
        replaceEnd(characterCount() - 1 - position, QString());
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

void TerminalDocument::dropNewest()
{
    if (characterCount() <= m_maxCharacters && blockCount() <= m_maxParagraphs)
        return;
    const int atCharacter = findBlock(m_maxCharacters - m_maxCharacters / 64).blockNumber();
    const int keep = m_maxParagraphs - m_maxParagraphs / 64;
    QTextBlock first = findBlockByNumber(atCharacter > 0 ? qMin(atCharacter, keep) : keep);
    while (LogLayout::isContinuation(first))
        first = first.previous();
    if (first.position() > 0)
        replaceEnd(characterCount() - first.position(), QString());
}

int TerminalDocument::paragraphs() const
{
    if (!m_hasLong)
        return blockCount();
    int count = 0;
    for (QTextBlock block = firstBlock(); block.isValid(); block = block.next())
        count += LogLayout::isContinuation(block) ? 0 : 1;
    return count;
}

int TerminalDocument::paragraphsBehind(const QTextBlock &block) const
{
    if (!m_hasLong)
        return blockCount() - 1 - block.blockNumber();
    int count = 0;
    for (QTextBlock next = block.next(); next.isValid(); next = next.next())
        count += LogLayout::isContinuation(next) ? 0 : 1;
    return count;
}

QTextBlock TerminalDocument::fromEnd(int paragraphs) const
{
    if (!m_hasLong)
        return paragraphs < blockCount() ? findBlockByNumber(blockCount() - 1 - paragraphs) : QTextBlock();
    for (QTextBlock block = lastBlock(); block.isValid(); block = block.previous())
        if (!LogLayout::isContinuation(block) && paragraphs-- == 0)
            return block;
    return QTextBlock();
}

int TerminalDocument::lengthOf(const QTextBlock &firstBlock)
{
    int length = firstBlock.length() - 1;
    for (QTextBlock block = firstBlock.next(); LogLayout::isContinuation(block); block = block.next())
        length += block.length() - 1;
    return length;
}

int TerminalDocument::positionIn(const QTextBlock &firstBlock, int column)
{
    QTextBlock block = firstBlock;
    while (column > block.length() - 1 && LogLayout::isContinuation(block.next())) {
        column -= block.length() - 1;
        block = block.next();
    }
    return block.position() + qMin(column, block.length() - 1);
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
