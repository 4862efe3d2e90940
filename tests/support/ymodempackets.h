#pragma once

#include <QByteArray>

// Bit by bit from the definition, on a message followed by 16 zero bits.
inline QByteArray ymodemCrc(const QByteArray &data)
{
    quint32 remainder = 0;
    for (const char byte : data + QByteArray(2, '\0'))
        for (int bit = 7; bit >= 0; --bit) {
            remainder = remainder << 1 | (static_cast<uchar>(byte) >> bit & 1u);
            if (remainder & 0x10000)
                remainder ^= 0x11021;
        }
    return QByteArray(1, static_cast<char>(remainder >> 8)) + static_cast<char>(remainder & 0xFF);
}

inline QByteArray packet(int number, const QByteArray &content, int size)
{
    const QByteArray data = content + QByteArray(size - content.size(), '\0');
    return QByteArray(1, size == 128 ? '\x01' : '\x02') + static_cast<char>(number) +
           static_cast<char>(255 - number) + data + ymodemCrc(data);
}
