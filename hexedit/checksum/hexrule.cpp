#include "hexrule.h"

#include "hexparse.h"

#include <algorithm>
#include <utility>

namespace {
constexpr qint64 kSlice = 1 << 18;
constexpr int kMaxText = 200; // characters of a field in a file
} // namespace

std::optional<HexRule::Places> HexRule::places(qint64 size) const
{
    const auto digestOf = HexDigest::make(digest, crc);
    const auto from = HexParse::address(begin, 16, 0, size);
    const auto to = HexParse::address(end, 16, 0, size);
    const auto place = HexParse::address(at, 16, 0, size);
    if (!digestOf || !from || !to || !place || *from > *to)
        return std::nullopt;
    const int bytes = digestOf->value().size();
    const bool isInside = *place<*to && * place + bytes> * from;
    if (isInside || *place + bytes > size)
        return std::nullopt;
    return Places{*from, *to, *place, bytes};
}

QByteArray HexRule::ordered(const QByteArray &value) const
{
    QByteArray bytes = value;
    if (isLittleEndian)
        std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

QString HexRule::text() const
{
    return QStringLiteral("%1，%2..%3，存放于%4，%5")
        .arg(crc.isEmpty() ? digest : QStringLiteral("CRC(%1)").arg(crc), begin, end, at,
             isLittleEndian ? QStringLiteral("小端") : QStringLiteral("大端"));
}

QJsonObject HexRule::toJson() const
{
    return {{"digest", digest}, {"crc", crc}, {"begin", begin},
            {"end", end},       {"at", at},   {"littleEndian", isLittleEndian},
            {"renew", renews}};
}

std::optional<HexRule> HexRule::fromJson(const QJsonObject &object)
{
    HexRule rule;
    rule.digest = object.value(QLatin1String("digest")).toString().left(kMaxText);
    rule.crc = object.value(QLatin1String("crc")).toString().left(kMaxText);
    rule.begin = object.value(QLatin1String("begin")).toString().left(kMaxText);
    rule.end = object.value(QLatin1String("end")).toString().left(kMaxText);
    rule.at = object.value(QLatin1String("at")).toString().left(kMaxText);
    rule.isLittleEndian = object.value(QLatin1String("littleEndian")).toBool(true);
    rule.renews = object.value(QLatin1String("renew")).toBool();
    if (!HexDigest::make(rule.digest, rule.crc))
        return std::nullopt;
    return rule;
}

HexDigestJob::HexDigestJob(const HexDocument &document, HexDigest digest, qint64 begin, qint64 end)
    : m_document(document)
    , m_digest(std::move(digest))
    , m_begin(begin)
    , m_end(std::min(end, document.size()))
    , m_at(begin)
{
}

bool HexDigestJob::step()
{
    if (m_at < m_end) {
        qint64 inRow = 0;
        const char *const bytes = m_document.span(m_at, &inRow);
        const qint64 count = std::min({inRow, kSlice, m_end - m_at});
        m_digest.add(bytes, static_cast<int>(count));
        m_at += count;
    }
    return m_at < m_end;
}

int HexDigestJob::permille() const
{
    return static_cast<int>((m_at - m_begin) * 1000 / std::max<qint64>(1, m_end - m_begin));
}
