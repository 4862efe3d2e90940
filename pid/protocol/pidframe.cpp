#include "pidframe.h"

#include <QtEndian>

#include <cstring>
#include <numeric>

namespace PidFrame {

QByteArray magic()
{
    return QByteArrayLiteral("ORVN");
}

QByteArray build(quint8 command, quint8 channel, const QByteArray &payload)
{
    QByteArray frame = magic();
    frame.reserve(payload.size() + overhead);
    frame += static_cast<char>(channel);
    frame += int32ToBytes(payload.size() + overhead);
    frame += static_cast<char>(command);
    frame += payload;
    frame += static_cast<char>(std::accumulate(frame.cbegin(), frame.cend(), 0U) & 0xFFU);
    return frame;
}

QByteArray int32ToBytes(qint32 value)
{
    QByteArray bytes(4, Qt::Uninitialized);
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray floatToBytes(float value)
{
    qint32 bits = 0;
    static_assert(sizeof bits == sizeof value, "a float is four bytes");
    std::memcpy(&bits, &value, sizeof bits);
    return int32ToBytes(bits);
}

qint32 bytesToInt32(const QByteArray &bytes)
{
    return bytes.size() == 4 ? qFromLittleEndian<qint32>(bytes.constData()) : 0;
}

float bytesToFloat(const QByteArray &bytes)
{
    const qint32 bits = bytesToInt32(bytes);
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

} // namespace PidFrame
