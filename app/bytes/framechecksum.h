#pragma once

// The checksum behind a frame, by its name: over bytes that are added in pieces,
// as the bytes that the frame gets.
//
// Byte order is the usual one of the protocols: a CRC whose bytes enter with their
// least significant bit first (crc-16/modbus, crc-32) has its low byte first, the
// others their high byte.

#include "checksum.h"

#include <QByteArray>
#include <QStringList>

#include <optional>

class FrameChecksum
{
public:
    // sum8, xor8, crc-8, crc-16/modbus, ...
    static QStringList names();
    // None where there is none of that name, in upper or lower case.
    static std::optional<FrameChecksum> named(const QString &name);

    void add(const QByteArray &bytes);
    QByteArray bytes() const;

private:
    struct Kind;
    static const QVector<Kind> &kinds();

    enum class Method { Sum, Xor, Crc };
    FrameChecksum(Method method, const CrcModel &model);

    Method m_method;
    CrcModel m_model;
    Crc m_crc;
    quint8 m_byte = 0; // of sum and exclusive or
};
