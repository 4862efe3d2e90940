#include "checksum.h"

namespace {

quint32 mirrored(quint32 value, int width)
{
    quint32 result = 0;
    for (int bit = 0; bit < width; ++bit) {
        result = result << 1 | (value & 1);
        value >>= 1;
    }
    return result;
}

} // namespace

Crc::Crc(const CrcModel &model)
    : m_model(model)
{
    const int gap = 32 - model.width;
    const quint32 low = mirrored(model.polynomial, model.width);
    const quint32 high = model.polynomial << gap;
    for (quint32 byte = 0; byte < 256; ++byte) {
        quint32 value = model.reflectIn ? byte : byte << 24;
        for (int bit = 0; bit < 8; ++bit) {
            if (model.reflectIn)
                value = (value >> 1) ^ (value & 1 ? low : 0);
            else
                value = (value << 1) ^ (value & 0x80000000 ? high : 0);
        }
        m_table[byte] = value;
    }
    reset();
}

void Crc::reset()
{
    m_remainder = m_model.reflectIn ? mirrored(m_model.initial, m_model.width)
                                    : m_model.initial << (32 - m_model.width);
}

void Crc::add(const char *bytes, qsizetype count)
{
    quint32 remainder = m_remainder;
    if (m_model.reflectIn) {
        for (const char *end = bytes + count; bytes != end; ++bytes)
            remainder = remainder >> 8 ^ m_table[(remainder ^ static_cast<uchar>(*bytes)) & 0xFF];
    } else {
        for (const char *end = bytes + count; bytes != end; ++bytes)
            remainder = remainder << 8 ^ m_table[(remainder >> 24) ^ static_cast<uchar>(*bytes)];
    }
    m_remainder = remainder;
}

quint32 Crc::value() const
{
    const quint32 remainder = m_model.reflectIn ? m_remainder : m_remainder >> (32 - m_model.width);
    return (m_model.reflectIn == m_model.reflectOut ? remainder : mirrored(remainder, m_model.width)) ^
           m_model.finalXor;
}

quint32 Crc::of(const CrcModel &model, const char *bytes, qsizetype count)
{
    Crc crc(model);
    crc.add(bytes, count);
    return crc.value();
}
