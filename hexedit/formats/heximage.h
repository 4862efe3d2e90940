#pragma once

// What a file says besides its bytes: which address they have, how its records
// are written, where the program starts, and what is wrong with the text.

#include "hexaddressmap.h"
#include "hexform.h"

#include <QString>
#include <QVector>

struct HexFault
{
    enum class Kind {
        Checksum,  // the bytes are loaded all the same
        Overlap,   // the later bytes win; the line where these began, the range
        Beyond,    // an address of more than 32 bits: not loaded
        Unknown,   // a line that is no record: not loaded
        Trailing,  // something behind a record: not loaded
        Truncated, // a record that is cut: not loaded
        Count,     // other data records than the file says
        AfterEnd,  // not loaded
        NoEnd,
    };
    Kind kind;
    qint64 line; // from 1; 0 where it is about the complete file
    qint64 address = 0;
    qint64 length = 0;

    QString text() const; // for the user
};

// The first faults of a file, and how many there are.
class HexFaults
{
public:
    static constexpr int maxKept = 1000;

    void add(const HexFault &fault);
    qint64 count() const { return m_count; }
    const QVector<HexFault> &first() const { return m_first; }
    // Saving writes the file without something that it holds, or writes right
    // what is wrong in it.
    bool losesOnSaving() const { return m_losesOnSaving; }

private:
    QVector<HexFault> m_first;
    qint64 m_count = 0;
    bool m_losesOnSaving = false;
};

struct HexImage
{
    HexForm form = HexForm::Bytes;
    HexRuns runs;

    // As it was written, to be written so again.
    int recordLength = 0;                // bytes in most records; 0 where it differs
    bool isAligned = false;              // records of that length begin at its multiples only
    bool hasLineFeedOnly = false;        // at the ends of lines, instead of CR LF
    int addressBytes = 2;                // S-record: at least
    bool hasCount = false;               // S-record: of the data records
    bool hasSegments = false;            // Intel: addresses by segments of 8086, not by 64 KB
    std::vector<QByteArray> headers;     // S-record
    std::optional<quint32> start;        // linear address
    std::optional<quint32> segmentStart; // Intel: CS in the upper 16 bits, IP
    quint32 endAddress = 0;              // Intel: of the end record, where old files start

    HexFaults faults;
};
