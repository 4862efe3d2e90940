#include "avifile.h"

#include <QFileDevice>
#include <QtEndian>

namespace {

constexpr int kHeadBytes = 224; // before the first picture
constexpr int kMoviAt = 220;
constexpr int kChunkHead = 8;
constexpr int kIndexEntry = 16;
constexpr qint64 kOneFrameUs = 33333; // a single picture has no rate
constexpr quint32 kHasIndex = 0x10;
constexpr quint32 kKeyFrame = 0x10;

class Fields
{
public:
    Fields &tag(const char *name)
    {
        m_bytes.append(name, 4);
        return *this;
    }
    Fields &u16(int value) { return number(static_cast<quint16>(value)); }
    Fields &u32(qint64 value) { return number(static_cast<quint32>(value)); }
    const QByteArray &bytes() const { return m_bytes; }

private:
    template <typename T> Fields &number(T value)
    {
        const T little = qToLittleEndian(value);
        m_bytes.append(reinterpret_cast<const char *>(&little), sizeof(T));
        return *this;
    }

    QByteArray m_bytes;
};

} // namespace

AviFile::AviFile(QFileDevice *file, QSize size, qint64 limit)
    : m_file(file)
    , m_size(size)
    , m_limit(limit)
{
}

bool AviFile::hasRoomFor(qsizetype jpegBytes) const
{
    const qint64 index = kChunkHead + kIndexEntry * (static_cast<qint64>(m_index.size()) + 1);
    return qMax<qint64>(m_end, kHeadBytes) + kChunkHead + jpegBytes + jpegBytes % 2 + index <= m_limit;
}

bool AviFile::write(const QByteArray &bytes)
{
    return m_file->write(bytes) == bytes.size();
}

bool AviFile::add(const QByteArray &jpeg, qint64 timeUs)
{
    if (m_end == 0) {
        m_end = kHeadBytes;
        m_firstUs = timeUs;
        if (!writeHead())
            return false;
    }
    QByteArray chunk = Fields().tag("00dc").u32(jpeg.size()).bytes() + jpeg;
    if (jpeg.size() % 2 != 0)
        chunk.append('\0');
    if (!m_file->seek(m_end) || !write(chunk)) {
        m_file->resize(m_end);
        return false;
    }
    m_index.push_back({static_cast<quint32>(m_end - kMoviAt), static_cast<quint32>(jpeg.size())});
    m_largest = qMax(m_largest, static_cast<quint32>(jpeg.size()));
    m_end += chunk.size();
    m_lastUs = timeUs;
    return true;
}

bool AviFile::writeHead()
{
    const qint64 count = frames();
    const qint64 frameUs =
        count > 1 ? qBound<qint64>(1, (m_lastUs - m_firstUs) / (count - 1), 100000000) : kOneFrameUs;
    const qint64 perSecond = qMin<qint64>(0xFFFFFFFF, m_end * 1000000 / (frameUs * qMax<qint64>(1, count)));
    const qint64 riffEnd = qMax(m_riffEnd, m_end);
    Fields head;
    head.tag("RIFF").u32(riffEnd - kChunkHead).tag("AVI ");
    head.tag("LIST").u32(192).tag("hdrl");
    head.tag("avih").u32(56).u32(frameUs).u32(perSecond).u32(0);
    head.u32(m_riffEnd > m_end ? kHasIndex : 0).u32(count).u32(0).u32(1).u32(m_largest + kChunkHead);
    head.u32(m_size.width()).u32(m_size.height()).u32(0).u32(0).u32(0).u32(0);
    head.tag("LIST").u32(116).tag("strl");
    head.tag("strh").u32(56).tag("vids").tag("MJPG").u32(0).u16(0).u16(0).u32(0);
    head.u32(frameUs).u32(1000000).u32(0).u32(count).u32(m_largest + kChunkHead).u32(-1).u32(0);
    head.u16(0).u16(0).u16(m_size.width()).u16(m_size.height());
    head.tag("strf").u32(40).u32(40).u32(m_size.width()).u32(m_size.height()).u16(1).u16(24).tag("MJPG");
    head.u32(qint64(m_size.width()) * m_size.height() * 3).u32(0).u32(0).u32(0).u32(0);
    head.tag("LIST").u32(m_end - kMoviAt).tag("movi");
    Q_ASSERT(head.bytes().size() == kHeadBytes);
    return m_file->seek(0) && write(head.bytes());
}

bool AviFile::finish()
{
    if (m_index.empty())
        return true;
    Fields index;
    index.tag("idx1").u32(kIndexEntry * static_cast<qint64>(m_index.size()));
    for (const Entry &entry : m_index)
        index.tag("00dc").u32(kKeyFrame).u32(entry.offset).u32(entry.bytes);
    const bool isWritten = m_file->seek(m_end) && write(index.bytes());
    if (isWritten)
        m_riffEnd = m_end + index.bytes().size();
    else
        m_file->resize(m_end);
    return writeHead() && isWritten;
}
