#include "hexrule.h"

#include "hexparse.h"

#include <algorithm>
#include <utility>

namespace {
constexpr qint64 kSlice = 1 << 18;
constexpr int kMaxText = 200; // characters of a field in a file
} // namespace

std::optional<HexRule::Places> HexRule::places(const HexAddressMap &addresses, qint64 size) const
{
    const auto digestOf = HexDigest::make(digest, crc);
    const auto addressIn = [last = addresses.addressOf(size)](const QString &text) {
        return HexParse::address(text, 16, 0, last);
    };
    const auto beginAt = addressIn(begin), endAt = addressIn(end), place = addressIn(at);
    if (!digestOf || !beginAt || !endAt || !place || *beginAt >= *endAt)
        return std::nullopt;
    const auto from = addresses.offsetOf(*beginAt, size);
    const auto last = addresses.offsetOf(*endAt - 1, size); // behind it may be a gap
    const auto to = addresses.offsetOf(*place, size);
    if (!from || !last || !to)
        return std::nullopt;
    const int bytes = digestOf->value().size();
    const bool isInside = *to <= *last && *to + bytes > *from;
    const bool hasGap = addresses.endOf(*from, size) <= *last || addresses.endOf(*to, size) < *to + bytes;
    if (isInside || hasGap)
        return std::nullopt;
    return Places{*from, *last + 1, *to, bytes};
}

QByteArray HexRule::ordered(const QByteArray &value) const
{
    QByteArray bytes = value;
    if (isLittleEndian && !HexDigest::isHash(digest))
        std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

QString HexRule::text() const
{
    const QString order = HexDigest::isHash(digest) ? QString()
                          : isLittleEndian          ? QStringLiteral("，小端")
                                                    : QStringLiteral("，大端");
    return QStringLiteral("%1，%2..%3，存放于%4%5")
        .arg(crc.isEmpty() ? digest : QStringLiteral("CRC(%1)").arg(crc), begin, end, at, order);
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
