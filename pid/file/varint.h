#pragma once

// Numbers of any size in as few bytes as they need: groups of 7 bits, lowest first, the
// high bit set in all bytes but the last (LEB128). Signed ones are folded first, so that
// small negative numbers are short too: 0, -1, 1, -2, 2 become 0, 1, 2, 3, 4. Also bytes,
// floats (IEEE 754, little-endian) and texts (length in bytes, then UTF-8).

#include <QByteArray>
#include <QString>
#include <QtEndian>

#include <cstring>

class VarintWriter
{
public:
    void reserve(int bytes) { m_bytes.reserve(bytes); }
    void addByte(int value) { m_bytes += static_cast<char>(value); }
    void addUnsigned(quint64 value)
    {
        for (; value > 0x7F; value >>= 7)
            m_bytes += static_cast<char>((value & 0x7F) | 0x80);
        m_bytes += static_cast<char>(value);
    }
    void addSigned(qint64 value)
    {
        addUnsigned(value < 0 ? ~(static_cast<quint64>(value) << 1) : static_cast<quint64>(value) << 1);
    }
    void addFloat(float value)
    {
        quint32 bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        bits = qToLittleEndian(bits);
        m_bytes.append(reinterpret_cast<const char *>(&bits), sizeof bits);
    }
    void addText(const QString &text)
    {
        const QByteArray utf8 = text.toUtf8();
        addUnsigned(static_cast<quint64>(utf8.size()));
        m_bytes += utf8;
    }

    const QByteArray &bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

// Reads what VarintWriter wrote. Behind an error, all numbers are 0 and texts empty.
class VarintReader
{
public:
    explicit VarintReader(const QByteArray &bytes) // which must outlive this
        : m_at(bytes.constData())
        , m_end(m_at + bytes.size())
    {
    }

    bool isOk() const { return m_isOk; }
    qint64 remaining() const { return m_end - m_at; }

    int byte() { return need(1) ? static_cast<uchar>(*m_at++) : 0; }
    quint64 unsignedNumber()
    {
        quint64 value = 0;
        for (int shift = 0; shift < 64 && need(1); shift += 7) {
            const auto byte = static_cast<uchar>(*m_at++);
            if (shift == 63 && byte > 1)
                break;
            value |= static_cast<quint64>(byte & 0x7F) << shift;
            if (byte < 0x80)
                return value;
        }
        fail();
        return 0;
    }
    qint64 signedNumber()
    {
        const quint64 folded = unsignedNumber();
        return static_cast<qint64>(folded >> 1) ^ -static_cast<qint64>(folded & 1);
    }
    // An unsigned number that counts or numbers something; an error beyond `max`.
    qint64 number(qint64 max)
    {
        const quint64 value = unsignedNumber();
        if (value <= static_cast<quint64>(max))
            return static_cast<qint64>(value);
        fail();
        return 0;
    }
    qint32 int32()
    {
        const qint64 value = signedNumber();
        if (value == static_cast<qint32>(value))
            return static_cast<qint32>(value);
        fail();
        return 0;
    }
    float floatNumber()
    {
        float value = 0;
        if (!need(sizeof value))
            return 0;
        const quint32 bits = qFromLittleEndian<quint32>(m_at);
        std::memcpy(&value, &bits, sizeof value);
        m_at += sizeof value;
        return value;
    }
    QString text()
    {
        const quint64 size = unsignedNumber();
        if (size > static_cast<quint64>(remaining())) {
            fail();
            return QString();
        }
        m_at += size;
        return QString::fromUtf8(m_at - size, static_cast<int>(size));
    }
    void fail()
    {
        m_isOk = false;
        m_at = m_end;
    }

private:
    bool need(qint64 bytes)
    {
        if (remaining() >= bytes)
            return true;
        fail();
        return false;
    }

    const char *m_at;
    const char *m_end;
    bool m_isOk = true;
};
