#include "hexedit/hexchecksum.h"

#include <array>

namespace {

template <class Value> std::array<Value, 256> makeTable(Value polynomial)
{
    std::array<Value, 256> table{};
    for (unsigned i = 0; i < 256; ++i) {
        unsigned value = i;
        for (int bit = 0; bit < 8; ++bit)
            value = (value >> 1) ^ ((value & 1) ? polynomial : 0U);
        table[i] = static_cast<Value>(value);
    }
    return table;
}

const std::array<quint32, 256> kCrc32 = makeTable<quint32>(0xEDB88320);
const std::array<quint16, 256> kCrc16 = makeTable<quint16>(0xA001);

} // namespace

HexChecksum::HexChecksum()
    : m_md5(QCryptographicHash::Md5)
    , m_sha256(QCryptographicHash::Sha256)
{
}

void HexChecksum::add(const char *bytes, int count)
{
    for (int i = 0; i < count; ++i) {
        const auto byte = static_cast<quint8>(bytes[i]);
        m_crc32 = (m_crc32 >> 8) ^ kCrc32[(m_crc32 ^ byte) & 0xFF];
        m_crc16 = static_cast<quint16>((m_crc16 >> 8) ^ kCrc16[(m_crc16 ^ byte) & 0xFF]);
        m_sum += byte;
    }
    m_md5.addData(bytes, count);
    m_sha256.addData(bytes, count);
}

quint32 HexChecksum::crc32() const
{
    return ~m_crc32;
}

quint16 HexChecksum::crc16Modbus() const
{
    return m_crc16;
}
