#pragma once

// Cyclic redundancy checks (CRC) over bytes that arrive in pieces. A CrcModel
// describes one in the usual parameters; the models that boards and boot
// loaders use have names. Sums need no class.

#include <QtGlobal>

#include <array>

struct CrcModel
{
    int width;          // bits, 8 to 32
    quint32 polynomial; // most significant bit first, without the leading one
    quint32 initial;
    bool reflectIn;  // each byte enters with its least significant bit first
    bool reflectOut; // the remainder is mirrored at the end
    quint32 finalXor;
};

namespace CrcModels {

// The comment is the check value: the CRC of the nine bytes "123456789".
constexpr CrcModel crc8{8, 0x07, 0x00, false, false, 0x00};                   // 0xF4
constexpr CrcModel crc16Xmodem{16, 0x1021, 0x0000, false, false, 0x0000};     // 0x31C3
constexpr CrcModel crc16CcittFalse{16, 0x1021, 0xFFFF, false, false, 0x0000}; // 0x29B1
constexpr CrcModel crc16Modbus{16, 0x8005, 0xFFFF, true, true, 0x0000};       // 0x4B37
constexpr CrcModel crc32{32, 0x04C11DB7, 0xFFFFFFFF, true, true, 0xFFFFFFFF}; // 0xCBF43926

} // namespace CrcModels

class Crc
{
public:
    explicit Crc(const CrcModel &model);

    // Forgets all bytes.
    void reset();
    void add(const char *bytes, qsizetype count);
    // Of the bytes so far; more may follow.
    quint32 value() const;

    static quint32 of(const CrcModel &model, const char *bytes, qsizetype count);

private:
    CrcModel m_model;
    std::array<quint32, 256> m_table; // remainders of all bytes
    quint32 m_remainder;              // reflected: in the low bits; otherwise in the high bits
};
