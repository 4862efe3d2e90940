#include "receivejournal.h"

namespace {

constexpr quint64 kHexBit = 1;
constexpr quint64 kNewestBit = 2;
constexpr int kKindShift = 2;
constexpr quint64 kMaxBytes = 1ULL << 30;

void appendBytes(const QByteArray &bytes, QByteArray *to)
{
    SpoolReader::appendNumber(quint64(bytes.size()), to);
    *to += bytes;
}

bool nextBytes(SpoolReader *reader, QByteArray *bytes)
{
    quint64 size = 0;
    return reader->nextNumber(&size) && size < kMaxBytes && reader->nextBytes(qint64(size), bytes);
}

} // namespace

ReceiveJournal::ReceiveJournal(const QString &folder)
    : m_spool(folder, QStringLiteral("shown"))
{
}

// Kind, bound and form in one number; milliseconds since the chunk before;
// header, source and bytes, each behind its size.
void ReceiveJournal::add(const ReceiveQueue::Chunk &chunk)
{
    const qint64 passed = qMax<qint64>(0, chunk.arrivalMs - m_writtenMs);
    m_writtenMs += passed;
    QByteArray record;
    record.reserve(chunk.bytes.size() + 64);
    SpoolReader::appendNumber(quint64(chunk.kind) << kKindShift | (chunk.hex ? kHexBit : 0) |
                                  (chunk.bound == ReceiveQueue::Bound::Newest ? kNewestBit : 0),
                              &record);
    SpoolReader::appendNumber(quint64(passed), &record);
    appendBytes(chunk.header.toUtf8(), &record);
    appendBytes(chunk.source.toUtf8(), &record);
    appendBytes(chunk.bytes, &record);
    m_spool.append(record.constData(), record.size());
}

void ReceiveJournal::beginReading()
{
    m_reader.emplace(m_spool, 0);
    m_readMs = 0;
}

void ReceiveJournal::endReading()
{
    m_reader.reset();
}

bool ReceiveJournal::next(ReceiveQueue::Chunk *chunk)
{
    quint64 flags = 0;
    quint64 passed = 0;
    QByteArray header;
    QByteArray source;
    if (!m_reader->nextNumber(&flags) || !m_reader->nextNumber(&passed) || !nextBytes(&*m_reader, &header) ||
        !nextBytes(&*m_reader, &source) || !nextBytes(&*m_reader, &chunk->bytes))
        return false;
    m_readMs += qint64(passed);
    chunk->kind = ReceiveQueue::Kind(flags >> kKindShift);
    chunk->hex = (flags & kHexBit) != 0;
    chunk->bound = (flags & kNewestBit) != 0 ? ReceiveQueue::Bound::Newest : ReceiveQueue::Bound::None;
    chunk->arrivalMs = m_readMs;
    chunk->header = QString::fromUtf8(header);
    chunk->source = QString::fromUtf8(source);
    return true;
}

void ReceiveJournal::clear()
{
    m_reader.reset();
    m_spool.clear();
    m_writtenMs = 0;
}
