#include "hextransform.h"

#include <algorithm>
#include <utility>

namespace {

using Kind = HexOperation::Kind;

constexpr qint64 kSlice = 1 << 16; // of bytes; complete units

quint8 reversedBits(quint8 byte)
{
    int reversed = 0;
    for (int bit = 0; bit < 8; ++bit)
        reversed |= ((byte >> bit) & 1) << (7 - bit);
    return static_cast<quint8>(reversed);
}

} // namespace

HexTransform::HexTransform(const HexDocument &document, qint64 begin, qint64 length, HexOperation operation)
    : m_document(document)
    , m_begin(begin)
    , m_length(length)
    , m_operation(std::move(operation))
{
    if (m_operation.hasUnit())
        m_cut = m_length % m_operation.unit;
    m_length -= m_cut;
}

QByteArray HexTransform::next()
{
    const int count = static_cast<int>(std::min(kSlice, m_length - m_done));
    const Kind kind = m_operation.kind;
    QByteArray bytes;
    if (kind == Kind::Fill)
        bytes = QByteArray(count, '\0');
    else if (kind == Kind::ReverseOrder)
        bytes = m_document.read(m_begin + m_length - m_done - count, count);
    else
        bytes = m_document.read(position(), count);
    if (kind == Kind::ReverseOrder)
        std::reverse(bytes.begin(), bytes.end());
    else if (m_operation.hasUnit())
        changeUnits(bytes);
    else
        combine(bytes);
    m_done += count;
    return bytes;
}

void HexTransform::combine(QByteArray &bytes) const
{
    const QByteArray &operand = m_operation.operand;
    qint64 at = operand.isEmpty() ? 0 : m_done % operand.size();
    for (char &byte : bytes) {
        const int old = static_cast<quint8>(byte);
        const int other = operand.isEmpty() ? 0 : static_cast<quint8>(operand.at(static_cast<int>(at)));
        int result = other;
        switch (m_operation.kind) {
        case Kind::Xor:
            result = old ^ other;
            break;
        case Kind::And:
            result = old & other;
            break;
        case Kind::Or:
            result = old | other;
            break;
        case Kind::Not:
            result = ~old;
            break;
        case Kind::ReverseBits:
            result = reversedBits(static_cast<quint8>(old));
            break;
        default:
            break;
        }
        byte = static_cast<char>(result);
        if (++at >= operand.size())
            at = 0;
    }
}

void HexTransform::changeUnits(QByteArray &bytes) const
{
    const int unit = m_operation.unit;
    for (int begin = 0; begin + unit <= bytes.size(); begin += unit) {
        char *const first = bytes.data() + begin;
        if (m_operation.kind == Kind::SwapBytes) {
            std::reverse(first, first + unit);
            continue;
        }
        const auto byteAt = [&](int significance) -> char & {
            return first[m_operation.isBigEndian ? unit - 1 - significance : significance];
        };
        quint64 value = 0;
        for (int i = 0; i < unit; ++i)
            value |= quint64(static_cast<quint8>(byteAt(i))) << (8 * i);
        value = changed(value);
        for (int i = 0; i < unit; ++i)
            byteAt(i) = static_cast<char>(value >> (8 * i));
    }
}

// Bits above those of the unit are dropped by the caller.
quint64 HexTransform::changed(quint64 value) const
{
    const int bits = m_operation.bits;
    const int rest = 8 * m_operation.unit - bits;
    switch (m_operation.kind) {
    case Kind::Add:
        return value + m_operation.addend;
    case Kind::ShiftLeft:
        return value << bits;
    case Kind::ShiftRight:
        return value >> bits;
    case Kind::RotateLeft:
        return value << bits | value >> rest;
    case Kind::RotateRight:
        return value >> bits | value << rest;
    default:
        return value;
    }
}

int HexTransform::permille() const
{
    return static_cast<int>(m_done * 1000 / std::max<qint64>(m_length, 1));
}
