#pragma once

// Reads a file of records block by block: its bytes in the order of their
// addresses, and all else that it says. Memory grows with the bytes, not with
// the text. Loads all that it understands; every fault is reported.

#include "heximage.h"
#include "hexrecord.h"
#include "hexrunmerge.h"

#include <utility>

class HexRecordReader
{
public:
    explicit HexRecordReader(HexForm form);

    // The next part of the file.
    void add(const char *text, int length);

    // After the last part, until it is done: some milliseconds of work each.
    enum class State { Running, Done };
    State finish();

    const HexImage &image() const { return m_image; }
    HexImage takeImage() { return std::move(m_image); }
    // One after another the bytes of all runs. Empty before it is done.
    const std::vector<QByteArray> &blocks() const { return m_ordered; }

private:
    enum class Stage { Lines, Merge, Runs, Done };

    void endLine();
    void readLine(const char *line, int length);
    void readIntel(const HexRecord &record);
    void readSRecord(const HexRecord &record);
    void addBytes(qint64 address, const quint8 *bytes, int length);
    void countRecord(const HexRecord &record);
    void addFault(HexFault::Kind kind, qint64 address = 0, qint64 length = 0);
    void endLines();
    void appendRun(const HexRunMerge::Stretch &stretch, qint64 from, qint64 count);
    State orderSlice();

    HexImage m_image;
    Stage m_stage = Stage::Lines;
    QByteArray m_line; // the incomplete one
    bool m_isLineTooLong = false;
    bool m_isAfterReturn = false;
    qint64 m_lineNumber = 1;
    bool m_isEnded = false; // by an end record
    bool m_isTailReported = false;

    bool m_isLinear = false; // Intel: which kind of base is in force
    qint64 m_base = 0;
    qint64 m_records = 0; // of data
    bool m_hasLinear = false;
    qint64 m_bytesByLength[256] = {}; // in records of that length
    bool m_hasUnaligned[256] = {};    // such that begin at no multiple of their length

    HexRunMerge m_merge;
    std::vector<QByteArray> m_blocks; // as they came, all but the last of one size
    size_t m_next = 0;                // stretch that has not been ordered
    qint64 m_nextInside = 0;          // of it
    qint64 m_orderedBytes = 0;
    std::vector<QByteArray> m_ordered;
};
