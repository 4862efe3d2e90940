#include "streamfile.h"

#include <QIODevice>
#include <QtEndian>

namespace {

constexpr char kMagic[] = "KORVXCAM";
constexpr int kMagicBytes = 8;
constexpr int kHeadBytes = 32;
constexpr int kRecordHead = 16;
constexpr quint8 kVersion = 1;
constexpr quint32 kMaxBytes = 64U << 20; // a false length must not fill the memory

enum HeadFlag : quint8 { RawJpeg = 1, BigEndian = 2 };

template <typename T> void put(QByteArray *bytes, T value)
{
    const T little = qToLittleEndian(value);
    bytes->append(reinterpret_cast<const char *>(&little), sizeof(T));
}

template <typename T> T get(const char *at)
{
    return qFromLittleEndian<T>(at);
}

} // namespace

QByteArray StreamHead::bytes() const
{
    QByteArray head(kMagic, kMagicBytes);
    put<quint8>(&head, kVersion);
    put<quint8>(&head, static_cast<quint8>((isRawJpeg ? RawJpeg : 0) | (isBigEndian ? BigEndian : 0)));
    put<quint8>(&head, valueLength);
    put<quint8>(&head, 0);
    for (const ImageRecord &format : formats) {
        put<quint8>(&head, static_cast<quint8>(format.format)); // as a board announces it
        put<quint16>(&head, format.width);
        put<quint16>(&head, format.height);
    }
    put<quint16>(&head, 0);
    put<qint64>(&head, beganMs);
    return head;
}

QByteArray StreamRecord::toBytes() const
{
    const QByteArray name = sender.toUtf8().left(0xFFFF);
    QByteArray record;
    record.reserve(kRecordHead + name.size() + bytes.size());
    put<quint8>(&record, kind);
    put<quint8>(&record, isDatagram ? 1 : 0);
    put<quint16>(&record, static_cast<quint16>(name.size()));
    put<quint32>(&record, static_cast<quint32>(bytes.size()));
    put<qint64>(&record, timeUs);
    return record + name + bytes;
}

bool StreamReader::open(QIODevice *device)
{
    m_device = device;
    const QByteArray head = device->read(kHeadBytes);
    if (head.size() < kHeadBytes || !head.startsWith(kMagic) || head.at(8) != kVersion)
        return false;
    m_head.isRawJpeg = head.at(9) & RawJpeg;
    m_head.isBigEndian = head.at(9) & BigEndian;
    m_head.valueLength = static_cast<quint8>(head.at(10));
    const char *at = head.constData() + 12;
    for (ImageRecord &format : m_head.formats) {
        format = {static_cast<quint8>(*at), get<quint16>(at + 1), get<quint16>(at + 3)};
        at += 5;
    }
    m_head.beganMs = get<qint64>(at + 2);
    return true;
}

StreamReader::Result StreamReader::next(StreamRecord *record)
{
    const QByteArray head = m_device->read(kRecordHead);
    if (head.isEmpty())
        return End;
    if (head.size() < kRecordHead || static_cast<quint8>(head.at(0)) > StreamRecord::Lost)
        return Damaged;
    const int nameBytes = get<quint16>(head.constData() + 2);
    const quint32 dataBytes = get<quint32>(head.constData() + 4);
    record->timeUs = get<qint64>(head.constData() + 8);
    if (dataBytes > kMaxBytes || record->timeUs < 0)
        return Damaged;
    const QByteArray name = m_device->read(nameBytes);
    record->bytes = m_device->read(dataBytes);
    if (name.size() < nameBytes || record->bytes.size() < static_cast<int>(dataBytes))
        return Damaged;
    record->kind = static_cast<StreamRecord::Kind>(head.at(0));
    record->isDatagram = head.at(1) & 1;
    record->sender = QString::fromUtf8(name);
    return Record;
}
