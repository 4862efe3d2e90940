#include "hexchecksum.h"

HexChecksum::HexChecksum()
    : m_crc32(CrcModels::crc32)
    , m_crc16(CrcModels::crc16Modbus)
    , m_md5(QCryptographicHash::Md5)
    , m_sha256(QCryptographicHash::Sha256)
{
}

void HexChecksum::add(const char *bytes, int count)
{
    m_crc32.add(bytes, count);
    m_crc16.add(bytes, count);
    for (int i = 0; i < count; ++i)
        m_sum += static_cast<quint8>(bytes[i]);
    m_md5.addData(bytes, count);
    m_sha256.addData(bytes, count);
}
