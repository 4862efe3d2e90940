#include "hexdocument.h"

#include <QIODevice>
#include <algorithm>
#include <functional>
#include <iterator>
#include <limits>

namespace {

// Bytes of one undo step of typing: no more than a user keeps in mind.
constexpr qint64 kTypingStep = 32;

// Replacements with fewer bytes between them are stored together with these
// bytes: a piece of its own would cost more memory.
constexpr qint64 kNear = 256;

} // namespace

void HexDocument::appendContent(const QByteArray &block)
{
    m_original.addBlock(block);
    m_table.reset(m_original.size());
    m_saved.set(m_table);
}

const char *HexDocument::span(qint64 address, qint64 *inRow) const
{
    return spanOf(m_table, address, inRow);
}

const char *HexDocument::spanOf(const PieceTable &table, qint64 address, qint64 *inRow) const
{
    const Piece piece = table.from(address);
    const char *bytes = (piece.added ? m_added : m_original).at(piece.offset, inRow);
    *inRow = std::min(*inRow, piece.length);
    return bytes;
}

QByteArray HexDocument::read(qint64 address, int count) const
{
    QByteArray bytes;
    qint64 left = std::min<qint64>(count, size() - address);
    bytes.reserve(static_cast<int>(std::max<qint64>(left, 0)));
    while (left > 0) {
        qint64 inRow = 0;
        const char *from = span(address, &inRow);
        inRow = std::min(inRow, left);
        bytes.append(from, static_cast<int>(inRow));
        address += inRow;
        left -= inRow;
    }
    return bytes;
}

bool HexDocument::write(QIODevice &device, qint64 address, qint64 count) const
{
    const qint64 end = count < 0 ? size() : std::min(size(), address + count);
    while (address < end) {
        qint64 inRow = 0;
        const char *bytes = span(address, &inRow);
        inRow = std::min(inRow, end - address);
        if (device.write(bytes, inRow) != inRow)
            return false;
        address += inRow;
    }
    return true;
}

std::vector<bool> HexDocument::changes(qint64 address, int count) const
{
    // Where nothing has moved, the value alone decides: a byte that was typed
    // over with its own value is no change.
    const bool sameSize = size() == m_saved.table().size();
    const auto isSame = [&](bool added, qint64 offset, qint64 at) {
        if (m_saved.has(added, offset))
            return true;
        qint64 inRow = 0;
        if (sameSize)
            return *spanOf(m_saved.table(), at, &inRow) == *span(at, &inRow);
        const qint64 place = offset - m_sameBegin;
        return added && place >= 0 && place < static_cast<qint64>(m_same.size()) &&
               m_same[static_cast<size_t>(place)];
    };
    std::vector<bool> changed;
    for (const Piece &piece : m_table.copy(address, std::min<qint64>(count, size() - address)))
        for (qint64 i = 0; i < piece.length; ++i)
            changed.push_back(
                !isSame(piece.added, piece.offset + i, address + static_cast<qint64>(changed.size())));
    return changed;
}

void HexDocument::replace(qint64 address, qint64 length, const QByteArray &bytes, Step step)
{
    length = std::min(length, size() - address);
    if (length > 0 || !bytes.isEmpty())
        put({address, m_table.copy(address, length), keep(bytes)}, step);
}

void HexDocument::addToBatch(Batch &batch, qint64 address, qint64 length, const QByteArray &bytes)
{
    if (!batch.m_anything) {
        batch.m_anything = true;
        batch.m_begin = batch.m_end = address;
    }
    const qint64 between = address - batch.m_end;
    const bool near = between > 0 && between < kNear && !batch.m_pieces.empty();
    const Pieces kept =
        near ? keepCopy(batch.m_end, static_cast<int>(between)) : m_table.copy(batch.m_end, between);
    for (const Piece &piece : kept)
        PieceTable::append(batch.m_pieces, piece);
    for (const Piece &piece : keep(bytes))
        PieceTable::append(batch.m_pieces, piece);
    batch.m_end = address + length;
}

void HexDocument::applyBatch(const Batch &batch)
{
    if (batch.m_anything)
        put({batch.m_begin, m_table.copy(batch.m_begin, batch.m_end - batch.m_begin), batch.m_pieces},
            Step::Alone);
}

qint64 HexDocument::undo()
{
    if (!canUndo())
        return -1;
    endTyping();
    const Edit &edit = m_edits[--m_done];
    m_table.replace(edit.address, PieceTable::lengthOf(edit.after), edit.before);
    return edit.address;
}

qint64 HexDocument::redo()
{
    if (!canRedo())
        return -1;
    endTyping();
    const Edit &edit = m_edits[m_done++];
    m_table.replace(edit.address, PieceTable::lengthOf(edit.before), edit.after);
    return edit.address + PieceTable::lengthOf(edit.after);
}

void HexDocument::setSaved()
{
    endTyping();
    m_savedAt = m_done;
    m_saved.set(m_table);
    m_same.clear();
    m_sameBegin = m_added.size();
}

void HexDocument::setUnsaved()
{
    endTyping();
    m_savedAt = std::numeric_limits<size_t>::max();
}

HexDocument HexDocument::savedState() const
{
    HexDocument saved;
    saved.m_original = m_original;
    saved.m_added = m_added;
    saved.m_table = m_saved.table();
    saved.m_saved = m_saved;
    return saved;
}

Pieces HexDocument::keep(const QByteArray &bytes)
{
    Pieces pieces;
    PieceTable::append(pieces, {m_added.size(), bytes.size(), true});
    m_added.append(bytes.constData(), bytes.size());
    return pieces;
}

// Stores unchanged bytes again, and which of them differ from the file.
Pieces HexDocument::keepCopy(qint64 address, int count)
{
    m_same.resize(static_cast<size_t>(m_added.size() - m_sameBegin), false);
    const std::vector<bool> changed = changes(address, count);
    std::transform(changed.begin(), changed.end(), std::back_inserter(m_same), std::logical_not<>());
    return keep(read(address, count));
}

void HexDocument::put(Edit edit, Step step)
{
    m_table.replace(edit.address, PieceTable::lengthOf(edit.before), edit.after);
    if (m_savedAt > m_done)
        m_savedAt = std::numeric_limits<size_t>::max(); // can't be reached any more
    m_edits.resize(m_done);
    const bool typing = step == Step::Typing;
    if (!(typing && m_typing && m_done > 0 && m_done != m_savedAt && join(m_edits.back(), edit))) {
        m_edits.push_back(std::move(edit));
        ++m_done;
    }
    m_typing = typing;
}

// True when the edit continues where the last one ended (typing, deleting
// forwards), replaces its end (the second digit of a byte), or ends where it
// began (deleting backwards).
bool HexDocument::join(Edit &last, const Edit &edit)
{
    const qint64 put = PieceTable::lengthOf(last.after);
    const qint64 taken = PieceTable::lengthOf(edit.before);
    if (put + PieceTable::lengthOf(edit.after) > kTypingStep ||
        PieceTable::lengthOf(last.before) + taken > kTypingStep)
        return false;
    const auto append = [](Pieces &to, const Pieces &more) {
        for (const Piece &piece : more)
            PieceTable::append(to, piece);
    };
    const qint64 end = last.address + put;
    if (edit.address == end) {
        append(last.before, edit.before);
        append(last.after, edit.after);
        return true;
    }
    if (edit.address + taken == end && taken > 0 && taken <= put) {
        Pieces rest;
        qint64 left = put - taken;
        for (Piece piece : last.after) {
            piece.length = std::min(piece.length, left);
            left -= piece.length;
            PieceTable::append(rest, piece);
        }
        append(rest, edit.after);
        last.after = rest;
        return true;
    }
    if (put == 0 && edit.after.empty() && edit.address + taken == last.address) {
        Pieces before = edit.before;
        append(before, last.before);
        last.before = before;
        last.address = edit.address;
        return true;
    }
    return false;
}
