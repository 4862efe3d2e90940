#pragma once

// What a receive display was given since its last clearing, on disk in the
// order of arrival: bytes, headers, times. From it the text can be made again with
// another codec or other options.

#include "receivequeue.h"
#include "spoolreader.h"

#include <optional>

class ReceiveJournal
{
public:
    // The file is made in the folder, see ByteSpool.
    explicit ReceiveJournal(const QString &folder);

    void add(const ReceiveQueue::Chunk &chunk);
    void clear();

    // False: chunks are missing, because the disk refused them.
    bool isComplete() const { return m_spool.state() != ByteSpool::State::Incomplete; }

    // Reads from the first chunk on; chunks may be added meanwhile.
    void beginReading();
    void endReading();
    bool isReading() const { return m_reader.has_value(); }
    // False at the end, or where the file can't be read back.
    bool next(ReceiveQueue::Chunk *chunk);

private:
    ByteSpool m_spool;
    qint64 m_writtenMs = 0;
    std::optional<SpoolReader> m_reader;
    qint64 m_readMs = 0;
};
