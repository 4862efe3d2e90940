#include "hexrecordreader.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace {

constexpr int kBlock = 1 << 20; // bytes
constexpr int kStretchSlice = 1 << 14;
constexpr int kMaxLine = 2 * HexRecord::maxLine; // blanks may follow a record
constexpr qint64 kSpace = qint64(1) << 32;       // addresses
constexpr qint64 kSegment = 1 << 16;
constexpr char kEndOfText = 0x1A; // which old systems put behind a text

bool isBlank(char character)
{
    return character == ' ' || character == '\t' || character == kEndOfText;
}

void appendTo(std::vector<QByteArray> &blocks, const char *bytes, qint64 count)
{
    while (count > 0) {
        if (blocks.empty() || blocks.back().size() == kBlock) {
            blocks.emplace_back();
            if (blocks.size() > 1) // small files need no more than they have
                blocks.back().reserve(kBlock);
        }
        const int now = static_cast<int>(std::min<qint64>(count, kBlock - blocks.back().size()));
        blocks.back().append(bytes, now);
        bytes += now;
        count -= now;
    }
}

} // namespace

HexRecordReader::HexRecordReader(HexForm form)
{
    m_image.form = form;
}

// ---- lines

void HexRecordReader::add(const char *text, int length)
{
    const char *const end = text + length;
    while (text < end) {
        const char *stop =
            std::find_if(text, end, [](char character) { return character == '\n' || character == '\r'; });
        if (m_isAfterReturn && text < stop) { // a return alone ends a line as well
            ++m_lineNumber;
            m_isAfterReturn = false;
        }
        const int part = static_cast<int>(stop - text);
        if (stop < end && m_line.isEmpty() && part <= kMaxLine) {
            readLine(text, part);
        } else {
            const int room = kMaxLine - m_line.size();
            m_line.append(text, std::min(part, room));
            m_isLineTooLong |= part > room;
            if (stop < end)
                endLine();
        }
        if (stop < end) {
            if (*stop == '\r' && m_isAfterReturn)
                ++m_lineNumber;
            if (*stop == '\n') {
                m_image.hasLineFeedOnly |= !m_isAfterReturn;
                ++m_lineNumber;
            }
            m_isAfterReturn = *stop == '\r';
            ++stop;
        }
        text = stop;
    }
}

void HexRecordReader::endLine()
{
    if (m_isLineTooLong && !m_isEnded)
        addFault(HexFault::Kind::Unknown);
    else
        readLine(m_line.constData(), m_line.size());
    m_line.clear();
    m_isLineTooLong = false;
}

void HexRecordReader::readLine(const char *line, int length)
{
    while (length > 0 && isBlank(line[length - 1]))
        --length;
    for (; length > 0 && isBlank(*line); ++line)
        --length;
    if (length == 0)
        return;
    if (m_isEnded) {
        if (!m_isTailReported)
            addFault(HexFault::Kind::AfterEnd);
        m_isTailReported = true;
        return;
    }
    HexRecord record;
    switch (HexRecord::parse(m_image.form, line, length, &record)) {
    case HexRecord::Problem::NoRecord:
        addFault(HexFault::Kind::Unknown);
        return;
    case HexRecord::Problem::Truncated:
        addFault(HexFault::Kind::Truncated);
        return;
    case HexRecord::Problem::Trailing:
        addFault(HexFault::Kind::Trailing);
        break;
    case HexRecord::Problem::None:
        break;
    }
    if (!record.isSumRight)
        addFault(HexFault::Kind::Checksum);
    if (m_image.form == HexForm::IntelHex)
        readIntel(record);
    else
        readSRecord(record);
}

void HexRecordReader::addFault(HexFault::Kind kind, qint64 address, qint64 length)
{
    m_image.faults.add({kind, m_lineNumber, address, length});
}

// ---- records

void HexRecordReader::readIntel(const HexRecord &record)
{
    const auto number = [&record](int count) {
        quint32 value = 0;
        for (int i = 0; i < count; ++i)
            value = value << 8 | record.bytes[i];
        return value;
    };
    switch (record.type) {
    case HexRecord::Data: {
        countRecord(record);
        // In a segment the offset wraps, in the linear address space it does not.
        const qint64 inside =
            m_isLinear ? record.length : std::min<qint64>(record.length, kSegment - record.address);
        addBytes(m_base + record.address, record.bytes, static_cast<int>(inside));
        if (inside < record.length)
            addBytes(m_base, record.bytes + inside, record.length - static_cast<int>(inside));
        break;
    }
    case HexRecord::End:
        m_isEnded = true;
        m_image.endAddress = record.address;
        break;
    case HexRecord::Segment:
        m_isLinear = false;
        m_base = static_cast<qint64>(number(2)) << 4;
        m_image.hasSegments = !m_hasLinear;
        break;
    case HexRecord::Linear:
        m_isLinear = m_hasLinear = true;
        m_base = static_cast<qint64>(number(2)) << 16;
        m_image.hasSegments = false;
        break;
    case HexRecord::SegmentStart:
        m_image.segmentStart = number(4);
        break;
    default:
        m_image.start = number(4);
        break;
    }
}

void HexRecordReader::readSRecord(const HexRecord &record)
{
    switch (record.type) {
    case 0:
        m_image.headers.push_back(QByteArray(reinterpret_cast<const char *>(record.bytes), record.length));
        break;
    case 1:
    case 2:
    case 3:
        countRecord(record);
        m_image.addressBytes = std::max(m_image.addressBytes, HexRecord::addressBytesOf(record.type));
        addBytes(record.address, record.bytes, record.length);
        break;
    case 5:
    case 6:
        m_image.hasCount = true;
        if (record.address != (m_records & (record.type == 5 ? 0xFFFF : 0xFFFFFF)))
            addFault(HexFault::Kind::Count);
        break;
    default:
        m_isEnded = true;
        m_image.start = record.address;
        m_image.addressBytes = std::max(m_image.addressBytes, HexRecord::addressBytesOf(record.type));
        break;
    }
}

void HexRecordReader::countRecord(const HexRecord &record)
{
    ++m_records;
    m_bytesByLength[record.length] += record.length;
    m_hasUnaligned[record.length] |=
        record.length > 0 && record.address % static_cast<quint32>(record.length) != 0;
}

void HexRecordReader::addBytes(qint64 address, const quint8 *bytes, int length)
{
    const int inside = static_cast<int>(std::clamp<qint64>(kSpace - address, 0, length));
    if (inside < length)
        addFault(HexFault::Kind::Beyond, address, length - inside);
    m_merge.add(address, inside, m_lineNumber);
    appendTo(m_blocks, reinterpret_cast<const char *>(bytes), inside);
}

// ---- the order of the addresses

HexRecordReader::State HexRecordReader::finish()
{
    switch (m_stage) {
    case Stage::Lines:
        endLines();
        m_stage = Stage::Merge;
        break;
    case Stage::Merge:
        if (!m_merge.step([this](const HexRunMerge::Stretch &later, qint64 begin, qint64 end) {
                m_image.faults.add({HexFault::Kind::Overlap, later.line, begin, end - begin});
            }))
            m_stage = Stage::Runs;
        break;
    case Stage::Runs:
        return orderSlice();
    case Stage::Done:
        return State::Done;
    }
    return State::Running;
}

void HexRecordReader::endLines()
{
    endLine();
    if (!m_isEnded)
        m_image.faults.add({HexFault::Kind::NoEnd, 0});
    const auto most = std::max_element(std::begin(m_bytesByLength), std::end(m_bytesByLength));
    if (2 * *most <= m_merge.byteCount())
        return;
    m_image.recordLength = static_cast<int>(most - std::begin(m_bytesByLength));
    m_image.isAligned = !m_hasUnaligned[m_image.recordLength];
}

HexRecordReader::State HexRecordReader::orderSlice()
{
    const std::vector<HexRunMerge::Stretch> &stretches = m_merge.stretches();
    qint64 room = m_merge.isUntouched() ? std::numeric_limits<qint64>::max() : kBlock;
    for (int i = 0; i < kStretchSlice && m_next < stretches.size() && room > 0; ++i) {
        const HexRunMerge::Stretch &stretch = stretches[m_next];
        const qint64 left = stretch.end - stretch.begin - m_nextInside;
        const qint64 count = std::min(left, room);
        appendRun(stretch, m_nextInside, count);
        room -= count;
        m_nextInside += count;
        if (count == left) {
            ++m_next;
            m_nextInside = 0;
        }
    }
    if (m_next < stretches.size())
        return State::Running;
    if (m_merge.isUntouched())
        m_ordered = std::move(m_blocks);
    m_blocks.clear();
    m_stage = Stage::Done;
    return State::Done;
}

void HexRecordReader::appendRun(const HexRunMerge::Stretch &stretch, qint64 from, qint64 count)
{
    HexRuns &runs = m_image.runs;
    const qint64 address = stretch.begin + from;
    if (runs.empty() || runs.back().address + runs.back().length != address)
        runs.push_back({address, m_orderedBytes, 0});
    runs.back().length += count;
    m_orderedBytes += count;
    if (m_merge.isUntouched())
        return; // the bytes are where they belong
    for (qint64 offset = stretch.offset + from; count > 0;) {
        const QByteArray &block = m_blocks[static_cast<size_t>(offset / kBlock)];
        const qint64 inside = offset % kBlock;
        const qint64 now = std::min(count, block.size() - inside);
        appendTo(m_ordered, block.constData() + inside, now);
        offset += now;
        count -= now;
    }
}
