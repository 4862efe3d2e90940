#include "hexdigest.h"

#include <algorithm>

struct HexDigest::Kind
{
    enum Method { Named, Custom, Sum, Negative, Xor, Hash };

    const char *name;
    Method method;
    CrcModel model;
    int bytes; // of a sum
    QCryptographicHash::Algorithm hash;
};

namespace {
constexpr CrcModel kNone{8, 0, 0, false, false, 0};
constexpr auto kNoHash = QCryptographicHash::Md5;
} // namespace

const std::vector<HexDigest::Kind> &HexDigest::kinds()
{
    static const std::vector<Kind> kinds = {
        {"CRC-32", Kind::Named, CrcModels::crc32, 4, kNoHash},
        {"CRC-32/BZIP2", Kind::Named, {32, 0x04C11DB7, 0xFFFFFFFF, false, false, 0xFFFFFFFF}, 4, kNoHash},
        {"CRC-32/MPEG-2", Kind::Named, {32, 0x04C11DB7, 0xFFFFFFFF, false, false, 0}, 4, kNoHash},
        {"CRC-32C", Kind::Named, {32, 0x1EDC6F41, 0xFFFFFFFF, true, true, 0xFFFFFFFF}, 4, kNoHash},
        {"CRC-16/MODBUS", Kind::Named, CrcModels::crc16Modbus, 2, kNoHash},
        {"CRC-16/XMODEM", Kind::Named, CrcModels::crc16Xmodem, 2, kNoHash},
        {"CRC-16/CCITT-FALSE", Kind::Named, CrcModels::crc16CcittFalse, 2, kNoHash},
        {"CRC-16/ARC", Kind::Named, {16, 0x8005, 0, true, true, 0}, 2, kNoHash},
        {"CRC-16/KERMIT", Kind::Named, {16, 0x1021, 0, true, true, 0}, 2, kNoHash},
        {"CRC-16/X-25", Kind::Named, {16, 0x1021, 0xFFFF, true, true, 0xFFFF}, 2, kNoHash},
        {"CRC-16/USB", Kind::Named, {16, 0x8005, 0xFFFF, true, true, 0xFFFF}, 2, kNoHash},
        {"CRC-24/OPENPGP", Kind::Named, {24, 0x864CFB, 0xB704CE, false, false, 0}, 3, kNoHash},
        {"CRC-8", Kind::Named, CrcModels::crc8, 1, kNoHash},
        {"CRC-8/MAXIM", Kind::Named, {8, 0x31, 0, true, true, 0}, 1, kNoHash},
        {"CRC 自定义", Kind::Custom, kNone, 0, kNoHash},
        {"累加和 8位", Kind::Sum, kNone, 1, kNoHash},
        {"累加和 16位", Kind::Sum, kNone, 2, kNoHash},
        {"累加和 32位", Kind::Sum, kNone, 4, kNoHash},
        {"累加和取反加一 8位", Kind::Negative, kNone, 1, kNoHash},
        {"异或 8位", Kind::Xor, kNone, 1, kNoHash},
        {"MD5", Kind::Hash, kNone, 16, QCryptographicHash::Md5},
        {"SHA-1", Kind::Hash, kNone, 20, QCryptographicHash::Sha1},
        {"SHA-256", Kind::Hash, kNone, 32, QCryptographicHash::Sha256},
        {"SHA-512", Kind::Hash, kNone, 64, QCryptographicHash::Sha512},
    };
    return kinds;
}

const HexDigest::Kind *HexDigest::find(const QString &name)
{
    const auto kind = std::find_if(kinds().begin(), kinds().end(), [&name](const Kind &entry) {
        return name == QString::fromUtf8(entry.name);
    });
    return kind == kinds().end() ? nullptr : &*kind;
}

QString HexDigest::customCrc()
{
    return QStringLiteral("CRC 自定义");
}

bool HexDigest::isHash(const QString &name)
{
    const Kind *const kind = find(name);
    return kind && kind->method == Kind::Hash;
}

QStringList HexDigest::names()
{
    QStringList names;
    for (const Kind &kind : kinds())
        names += QString::fromUtf8(kind.name);
    return names;
}

std::optional<CrcModel> HexDigest::crcOf(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    if (parts.size() != 6)
        return std::nullopt;
    bool isNumber = false;
    const int width = parts.at(0).trimmed().toInt(&isNumber);
    if (!isNumber || width < 3 || width > 32)
        return std::nullopt;
    quint32 values[5] = {};
    for (int i = 0; i < 5; ++i) {
        values[i] = parts.at(i + 1).trimmed().toUInt(&isNumber, 16);
        const quint32 limit = i == 2 || i == 3 ? 1 : width == 32 ? 0xFFFFFFFF : (1U << width) - 1;
        if (!isNumber || values[i] > limit)
            return std::nullopt;
    }
    return CrcModel{width, values[0], values[1], values[2] == 1, values[3] == 1, values[4]};
}

QString HexDigest::crcText(const QString &name)
{
    const Kind *const kind = find(name);
    if (!kind || kind->method != Kind::Named)
        return QString();
    const CrcModel &model = kind->model;
    const auto hex = [&model](quint32 value) {
        return QStringLiteral("%1").arg(value, (model.width + 3) / 4, 16, QLatin1Char('0')).toUpper();
    };
    return QStringLiteral("%1,%2,%3,%4,%5,%6")
        .arg(model.width)
        .arg(hex(model.polynomial), hex(model.initial))
        .arg(model.reflectIn ? 1 : 0)
        .arg(model.reflectOut ? 1 : 0)
        .arg(hex(model.finalXor));
}

std::optional<HexDigest> HexDigest::make(const QString &name, const QString &crc)
{
    const Kind *const kind = find(name);
    if (!kind)
        return std::nullopt;
    const auto model = kind->method == Kind::Custom ? crcOf(crc) : kind->model;
    return model ? std::optional<HexDigest>(HexDigest(*kind, *model)) : std::nullopt;
}

HexDigest::HexDigest(const Kind &kind, const CrcModel &model)
    : m_kind(&kind)
    , m_bytes(kind.bytes)
{
    if (kind.method == Kind::Named || kind.method == Kind::Custom) {
        m_crc.emplace(model);
        m_bytes = (model.width + 7) / 8;
    } else if (kind.method == Kind::Hash) {
        m_hash = std::make_unique<QCryptographicHash>(kind.hash);
    }
}

void HexDigest::add(const char *bytes, int count)
{
    if (m_crc)
        return m_crc->add(bytes, count);
    if (m_hash)
        return m_hash->addData(bytes, count);
    quint64 sum = m_sum;
    if (m_kind->method == Kind::Xor)
        for (int i = 0; i < count; ++i)
            sum ^= static_cast<quint8>(bytes[i]);
    else
        for (int i = 0; i < count; ++i)
            sum += static_cast<quint8>(bytes[i]);
    m_sum = sum;
}

QByteArray HexDigest::value() const
{
    if (m_hash)
        return m_hash->result();
    const quint64 number = m_crc ? m_crc->value() : m_kind->method == Kind::Negative ? ~m_sum + 1 : m_sum;
    QByteArray bytes;
    for (int i = m_bytes - 1; i >= 0; --i)
        bytes.append(static_cast<char>(number >> (8 * i)));
    return bytes;
}
