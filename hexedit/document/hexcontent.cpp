#include "hexcontent.h"

#include "hexcharacters.h"
#include "textcodec.h"

#include <algorithm>
#include <utility>

void HexContent::setDocument(HexDocument document, qint64 address)
{
    m_document = std::move(document);
    endEdit(address);
}

HexContent::Range HexContent::selection() const
{
    return {std::min(m_anchor, m_caret), std::max(m_anchor, m_caret)};
}

bool HexContent::isSelected(qint64 address) const
{
    return address >= selection().begin && address < selection().end;
}

void HexContent::moveCaret(qint64 address, bool keepAnchor)
{
    m_document.endTyping();
    m_isOnLowDigit = false;
    m_caret = std::clamp<qint64>(address, 0, size());
    if (!keepAnchor)
        m_anchor = m_caret;
}

void HexContent::select(qint64 anchor, qint64 caret)
{
    moveCaret(anchor);
    moveCaret(caret, true);
}

void HexContent::moveToLowDigit()
{
    m_isOnLowDigit = m_caret < size();
    m_beforeDigit.reset();
}

void HexContent::setInText(bool inText)
{
    m_isInText = inText;
    m_isOnLowDigit = false;
    m_document.endTyping();
}

void HexContent::setOverwrite(bool overwrite)
{
    m_isOverwrite = overwrite;
    m_document.endTyping();
}

int HexContent::shownCodec() const
{
    return m_isAsciiOnly ? HexCharacters::ascii : m_codec;
}

bool HexContent::isInsideCharacter(qint64 address) const
{
    const auto cells = HexCharacters::cells(m_document, address, 1, shownCodec());
    return !cells.empty() && cells.front().isEmpty();
}

HexContent::Range HexContent::withWholeCharacters(Range range) const
{
    while (isInsideCharacter(range.begin))
        --range.begin;
    while (isInsideCharacter(range.end))
        ++range.end;
    return range;
}

bool HexContent::leavesRun(qint64 count) const
{
    const qint64 begin = selection().begin;
    return m_addresses.isFixed() && begin + count > m_addresses.endOf(begin, size());
}

qint64 HexContent::typedLength(const QString &text) const
{
    if (m_isInText)
        return TextCodec::encode(text, m_codec).size();
    return text.isEmpty() ? 0 : 1; // digits fill one byte after the other
}

// The rest of a character that is edited in part would join with its neighbors
// into other characters.
HexContent::Range HexContent::editedSelection() const
{
    return m_isInText && hasSelection() ? withWholeCharacters(selection()) : selection();
}

bool HexContent::typeText(const QString &text)
{
    if (m_isInText) {
        putBytes(TextCodec::encode(text, m_codec), Step::Typing);
        return true;
    }
    bool hasTyped = false;
    for (const QChar character : text) {
        bool isDigit = false;
        const int digit = QString(character).toInt(&isDigit, 16);
        if (isDigit)
            typeDigit(digit);
        hasTyped |= isDigit;
    }
    return hasTyped;
}

void HexContent::typeDigit(int digit)
{
    if (hasSelection()) {
        if (m_isOverwrite)
            moveCaret(selection().begin);
        else
            deleteSelection();
    }
    const qint64 at = m_caret;
    const bool isPresent = at < size();
    const int old = isPresent ? static_cast<quint8>(m_document.read(at, 1).at(0)) : 0;
    if (m_isOnLowDigit && isPresent) {
        edit({at, at + 1}, QByteArray(1, static_cast<char>((old & 0xF0) | digit)), Step::Typing, at + 1);
        return;
    }
    const int kept = m_isOverwrite ? old & 0x0F : 0;
    const int replaced = m_isOverwrite && isPresent ? 1 : 0;
    m_beforeDigit = m_document.read(at, replaced);
    edit({at, at + replaced}, QByteArray(1, static_cast<char>((digit << 4) | kept)), Step::Typing, at);
    m_isOnLowDigit = true;
}

void HexContent::eraseDigit()
{
    edit({m_caret, m_caret + 1}, *m_beforeDigit, Step::Typing, m_caret);
}

void HexContent::putBytes(const QByteArray &bytes, Step step)
{
    if (bytes.isEmpty())
        return;
    const qint64 begin = selection().begin;
    const Range range = m_isOverwrite ? Range{begin, begin + bytes.size()} : editedSelection();
    edit(range, bytes, hasSelection() ? Step::Alone : step, range.begin + bytes.size());
}

void HexContent::replaceSelection(const QByteArray &bytes)
{
    edit(selection(), bytes, Step::Alone, selection().begin + bytes.size());
}

void HexContent::deleteSelection()
{
    const Range range = editedSelection();
    edit(range, QByteArray(), Step::Alone, range.begin);
}

void HexContent::deleteAt(qint64 address)
{
    const Range byte{address, address + 1};
    const Range range = m_isInText ? withWholeCharacters(byte) : byte;
    edit(range, QByteArray(), Step::Typing, range.begin);
}

void HexContent::edit(Range range, const QByteArray &bytes, Step step, qint64 caret)
{
    m_document.replace(range.begin, range.length(), bytes, step);
    endEdit(caret);
}

void HexContent::endEdit(qint64 caret)
{
    m_isOnLowDigit = false;
    m_caret = m_anchor = std::clamp<qint64>(caret, 0, size());
}
