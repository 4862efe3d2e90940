#pragma once

// The bytes of an open file and every edit since: read, replace, undo, redo.
// Owns the bytes and the history. The cost of an edit grows with the number of
// edits before it, not with the size of the file. Addresses count from 0. Knows
// no widget and no file.

#include "bytestore.h"
#include "piecetable.h"
#include "savedcontent.h"

#include <QByteArray>

class QIODevice;

class HexDocument
{
public:
    // Whether an edit may join the one before it into one step of undo.
    enum class Step { Alone, Typing };

    // What the file holds, block by block, before the first edit.
    void appendContent(const QByteArray &block);

    qint64 size() const { return m_table.size(); }

    // The bytes at an address inside the document, and how many of them are
    // contiguous in memory. Valid until the next edit.
    const char *span(qint64 address, qint64 *inRow) const;

    // At most `count` bytes; fewer at the end.
    QByteArray read(qint64 address, int count) const;

    // Writes a range, to the end where no count is given. False when the device
    // accepted less.
    bool write(QIODevice &device, qint64 address = 0, qint64 count = -1) const;

    // One for each byte of a range inside the document: whether it differs from
    // the file as it was opened or saved. Bytes that only moved don't.
    std::vector<bool> changes(qint64 address, int count) const;

    // Replaces a range, which is cut at the end of the document.
    void replace(qint64 address, qint64 length, const QByteArray &bytes, Step step = Step::Alone);
    // The next edit begins a new undo step, even if it is typing.
    void endTyping() { m_typing = false; }

    // Replacements that are one undo step, in ascending order of their addresses
    // and without overlap. Nothing changes before applyBatch().
    class Batch
    {
        friend class HexDocument;
        qint64 m_begin = -1;
        qint64 m_end = -1;
        Pieces m_pieces;
        bool m_anything = false;
    };
    void addToBatch(Batch &batch, qint64 address, qint64 length, const QByteArray &bytes);
    void applyBatch(const Batch &batch);

    bool canUndo() const { return m_done > 0; }
    bool canRedo() const { return m_done < m_edits.size(); }
    // Each returns the address behind (or at) what changed, -1 when there is nothing to do.
    qint64 undo();
    qint64 redo();

    bool isModified() const { return m_done != m_savedAt; }
    // The file has the present bytes.
    void setSaved();
    // No file has the present bytes: modified until it is saved.
    void setUnsaved();
    // The bytes as the file was opened or saved, without history.
    HexDocument savedState() const;

private:
    struct Edit
    {
        qint64 address;
        Pieces before;
        Pieces after;
    };

    const char *spanOf(const PieceTable &table, qint64 address, qint64 *inRow) const;
    Pieces keep(const QByteArray &bytes);
    Pieces keepCopy(qint64 address, int count);
    void put(Edit edit, Step step);
    static bool join(Edit &last, const Edit &edit);

    ByteStore m_original;
    ByteStore m_added;
    PieceTable m_table;
    std::vector<Edit> m_edits;
    size_t m_done = 0;    // edits that are in force; the rest can be redone
    size_t m_savedAt = 0; // m_done of the file's content
    SavedContent m_saved;
    // Of the bytes added since it was saved: copies of bytes that did not differ
    // from the file. May be shorter than what was added.
    std::vector<bool> m_same;
    qint64 m_sameBegin = 0;
    bool m_typing = false;
};
