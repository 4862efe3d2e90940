#pragma once

// The usual checksums of firmware images, over bytes that are added in slices.

#include "checksum.h"

#include <QByteArray>
#include <QCryptographicHash>

class HexChecksum
{
public:
    HexChecksum();

    void add(const char *bytes, int count);

    quint32 crc32() const { return m_crc32.value(); }
    quint32 crc16Modbus() const { return m_crc16.value(); }
    quint64 sum() const { return m_sum; }
    QByteArray md5() const { return m_md5.result(); }
    QByteArray sha256() const { return m_sha256.result(); }

private:
    Crc m_crc32;
    Crc m_crc16;
    quint64 m_sum = 0;
    QCryptographicHash m_md5;
    QCryptographicHash m_sha256;
};
