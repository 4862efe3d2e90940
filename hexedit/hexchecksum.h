#pragma once

// The checksums that firmware comes with, over bytes that arrive in slices.

#include <QByteArray>
#include <QCryptographicHash>

class HexChecksum
{
public:
    HexChecksum();

    void add(const char *bytes, int count);

    quint32 crc32() const;       // polynomial 0xEDB88320 reflected, as in zip and Ethernet
    quint16 crc16Modbus() const; // polynomial 0xA001 reflected, begun with 0xFFFF
    quint64 sum() const { return m_sum; }
    QByteArray md5() const { return m_md5.result(); }
    QByteArray sha256() const { return m_sha256.result(); }

private:
    quint32 m_crc32 = 0xFFFFFFFF;
    quint16 m_crc16 = 0xFFFF;
    quint64 m_sum = 0;
    QCryptographicHash m_md5;
    QCryptographicHash m_sha256;
};
