#include "hexrecordoutput.h"

#include "hexrecord.h"

#include <algorithm>
#include <utility>

namespace {

constexpr qint64 kSpace = qint64(1) << 32;    // addresses
constexpr qint64 kSegments = qint64(1) << 20; // that segments reach
constexpr qint64 kPart = 1 << 16;             // addresses behind one extended address

QByteArray bigEndian(quint32 number, int bytes)
{
    QByteArray result;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        result.append(static_cast<char>(number >> shift & 0xFF));
    return result;
}

qint64 endOf(const HexRuns &runs)
{
    return runs.empty() ? 0 : runs.back().address + runs.back().length;
}

} // namespace

HexRecordOutput::HexRecordOutput(const HexDocument &document, HexRuns runs, const HexImage &image,
                                 int recordLength)
    : m_document(document)
    , m_runs(std::move(runs))
    , m_image(image)
    , m_addressBytes(image.addressBytes)
    , m_hasSegments(image.hasSegments && endOf(m_runs) <= kSegments)
{
    const qint64 highest = std::max<qint64>(endOf(m_runs) - 1, linearStart());
    while (m_addressBytes < 4 && highest >> 8 * m_addressBytes > 0)
        ++m_addressBytes;
    m_recordLength = std::clamp(recordLength, 1, HexRecord::maxLength(m_image.form, m_addressBytes));
}

QString HexRecordOutput::refusal(const HexRuns &runs)
{
    return endOf(runs) > kSpace ? QStringLiteral("有超出4 GB的地址，此格式不能表示") : QString();
}

// Program and stack of an 8086 start at segment times 16 plus offset.
quint32 HexRecordOutput::linearStart() const
{
    if (m_image.start)
        return *m_image.start;
    const quint32 segmented = m_image.segmentStart.value_or(0);
    return (segmented >> 16 << 4) + (segmented & 0xFFFF);
}

qint64 HexRecordOutput::size() const
{
    constexpr qint64 around =
        20; // characters of a record without its bytes, and bytes of an extended address
    qint64 records = 8;
    for (const HexRun &run : m_runs) // with extended addresses and what they part
        records += run.length / m_recordLength + 3 + 2 * (run.length / kPart + 1);
    qint64 size = records * around + 2 * m_document.size();
    for (const QByteArray &header : m_image.headers)
        size += around + 2 * qint64(header.size());
    return size;
}

QByteArray HexRecordOutput::next()
{
    QByteArray text;
    text.reserve(slice + 2 * HexRecord::maxLine);
    while (m_stage != Stage::Done && text.size() < slice)
        appendNext(&text);
    return text;
}

void HexRecordOutput::appendNext(QByteArray *text)
{
    const bool isIntel = m_image.form == HexForm::IntelHex;
    switch (m_stage) {
    case Stage::Header:
        if (isIntel || m_header == m_image.headers.size())
            m_stage = Stage::Data;
        else
            appendRecord(0, 0, m_image.headers[m_header++], text);
        break;
    case Stage::Data:
        if (m_run == m_runs.size())
            m_stage = isIntel ? Stage::SegmentStart : Stage::Count;
        else
            appendData(text);
        break;
    case Stage::Count:
        appendCount(text);
        m_stage = Stage::End;
        break;
    case Stage::SegmentStart:
        if (m_image.segmentStart)
            appendRecord(HexRecord::SegmentStart, 0, bigEndian(*m_image.segmentStart, 4), text);
        m_stage = Stage::Start;
        break;
    case Stage::Start:
        if (m_image.start)
            appendRecord(HexRecord::LinearStart, 0, bigEndian(*m_image.start, 4), text);
        m_stage = Stage::End;
        break;
    case Stage::End:
        appendEnd(text);
        m_stage = Stage::Done;
        break;
    case Stage::Done:
        break;
    }
}

void HexRecordOutput::appendData(QByteArray *text)
{
    const HexRun &run = m_runs[m_run];
    if (m_inside == run.length) {
        ++m_run;
        m_inside = 0;
        return;
    }
    const bool isIntel = m_image.form == HexForm::IntelHex;
    const qint64 address = run.address + m_inside;
    const qint64 inRecord = isIntel ? address % kPart : address; // the address that it has
    qint64 count = m_recordLength - (m_image.isAligned ? inRecord % m_recordLength : 0);
    count = std::min(count, run.length - m_inside);
    if (isIntel) {
        count = std::min(count, kPart - inRecord);
        appendBase(address / kPart, text);
    }
    appendRecord(isIntel ? HexRecord::Data : m_addressBytes - 1, static_cast<quint32>(inRecord),
                 m_document.read(run.offset + m_inside, static_cast<int>(count)), text);
    m_inside += count;
    m_bytes += count;
    ++m_records;
}

void HexRecordOutput::appendBase(qint64 part, QByteArray *text)
{
    const qint64 base = m_hasSegments ? part << 12 : part;
    if (base == m_base)
        return;
    appendRecord(m_hasSegments ? HexRecord::Segment : HexRecord::Linear, 0,
                 bigEndian(static_cast<quint32>(base), 2), text);
    m_base = base;
}

// A number that fits no record is left out.
void HexRecordOutput::appendCount(QByteArray *text)
{
    if (m_image.hasCount && m_records <= 0xFFFFFF)
        appendRecord(m_records <= 0xFFFF ? 5 : 6, static_cast<quint32>(m_records), QByteArray(), text);
}

void HexRecordOutput::appendEnd(QByteArray *text)
{
    if (m_image.form == HexForm::IntelHex)
        appendRecord(HexRecord::End, m_image.endAddress, QByteArray(), text);
    else
        appendRecord(11 - m_addressBytes, linearStart(), QByteArray(), text);
}

void HexRecordOutput::appendRecord(int type, quint32 address, const QByteArray &bytes, QByteArray *text)
{
    HexRecord::append(m_image.form, type, address, bytes, text);
    if (!m_image.hasLineFeedOnly)
        text->append('\r');
    text->append('\n');
}
