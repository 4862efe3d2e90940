#pragma once

// Which address each byte of a document has. A plain file is one run of any
// length from its first address; the image of a firmware is runs with gaps
// between them, whose bytes follow each other in the document. Offsets count
// from 0 to the document's size, where the caret can stand as well.

#include <QtGlobal>
#include <optional>
#include <vector>

struct HexRun
{
    qint64 address;
    qint64 offset; // in the document
    qint64 length;
    bool operator==(const HexRun &other) const
    {
        return address == other.address && offset == other.offset && length == other.length;
    }
};

using HexRuns = std::vector<HexRun>;

class HexAddressMap
{
public:
    explicit HexAddressMap(qint64 firstAddress = 0);
    // Ascending, without overlap; the offsets follow each other from 0.
    explicit HexAddressMap(HexRuns runs);

    // The image of a firmware: inserting and deleting would move bytes to other
    // addresses, so that its bytes can be overwritten only.
    bool isFixed() const { return m_isFixed; }
    qint64 firstAddress() const { return m_runs.front().address; }
    size_t runCount() const { return m_runs.size(); }

    // All of a document of that size.
    HexRuns runs(qint64 size) const;
    // The one that an offset is in, or ends.
    HexRun run(size_t index, qint64 size) const;
    size_t runOf(qint64 offset) const;
    // Behind the last byte of the run.
    qint64 endOf(qint64 offset, qint64 size) const;

    qint64 addressOf(qint64 offset) const;
    // Nothing for an address in a gap or outside.
    std::optional<qint64> offsetOf(qint64 address, qint64 size) const;

private:
    HexRuns m_runs; // never empty; the last one ends with the document
    bool m_isFixed = false;
};
