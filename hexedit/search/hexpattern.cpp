#include "hexpattern.h"

#include "hexparse.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <type_traits>

namespace {

// An expression such as (a+)+b takes years on some bytes.
const auto kStepLimit = QStringLiteral("(*LIMIT_MATCH=20000)");

// Boyer and Moore's search with both of their rules: without the second one,
// long rows of equal bytes, which firmware is full of, cost the pattern's
// length for every byte.
template <class Iterator> std::function<qint64(Iterator, Iterator)> makeFinder(Iterator begin, Iterator end)
{
    const std::boyer_moore_searcher<Iterator> searcher(begin, end);
    return [searcher](Iterator from, Iterator to) {
        const Iterator hit = std::search(from, to, searcher);
        return hit == to ? qint64(-1) : static_cast<qint64>(hit - from);
    };
}

using Finder = std::function<qint64(const char *, const char *)>;

// The bytes are kept: the search points into them.
Finder forwardFinder(const QByteArray &bytes)
{
    const auto find = makeFinder(bytes.constBegin(), bytes.constEnd());
    return [bytes, find](const char *first, const char *last) { return find(first, last); };
}

Finder backwardFinder(const QByteArray &bytes)
{
    using Reverse = std::reverse_iterator<const char *>;
    const auto find = makeFinder(Reverse(bytes.constEnd()), Reverse(bytes.constBegin()));
    return [bytes, find](const char *first, const char *last) {
        const qint64 fromEnd = find(Reverse(last), Reverse(first));
        return fromEnd < 0 ? fromEnd : last - first - fromEnd - bytes.size();
    };
}

// Decimal, or hexadecimal digits that stand for the bits.
template <class T> std::optional<T> integerOf(const QString &text)
{
    using Bits = std::make_unsigned_t<T>;
    using Limits = std::numeric_limits<T>;
    const QString number = text.trimmed();
    bool isNumber = false;
    if (number.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) {
        const qulonglong bits = number.toULongLong(&isNumber, 16);
        isNumber = isNumber && bits <= std::numeric_limits<Bits>::max();
        return isNumber ? std::optional<T>(static_cast<T>(bits)) : std::nullopt;
    }
    if constexpr (Limits::is_signed) {
        const qlonglong value = number.toLongLong(&isNumber);
        isNumber = isNumber && value >= Limits::min() && value <= Limits::max();
        return isNumber ? std::optional<T>(static_cast<T>(value)) : std::nullopt;
    } else {
        const qulonglong value = number.toULongLong(&isNumber);
        isNumber = isNumber && value <= Limits::max();
        return isNumber ? std::optional<T>(static_cast<T>(value)) : std::nullopt;
    }
}

template <class T> T readAs(const char *at, bool bigEndian)
{
    return bigEndian ? qFromBigEndian<T>(at) : qFromLittleEndian<T>(at);
}

// Parts of "a..b", or the one twice.
std::pair<QString, QString> endsOf(const QString &range)
{
    const int dots = range.indexOf(QLatin1String(".."));
    return dots < 0 ? std::make_pair(range, range) : std::make_pair(range.left(dots), range.mid(dots + 2));
}

struct Range
{
    int bytes = 0;
    std::function<bool(const char *)> contains;
};

template <class T> std::optional<Range> integers(const QString &text, bool bigEndian)
{
    const auto ends = endsOf(text);
    const auto from = integerOf<T>(ends.first);
    const auto to = integerOf<T>(ends.second);
    if (!from || !to || *from > *to)
        return std::nullopt;
    return Range{static_cast<int>(sizeof(T)), [from = *from, to = *to, bigEndian](const char *at) {
                     const T value = readAs<T>(at, bigEndian);
                     return value >= from && value <= to;
                 }};
}

template <class T, class Bits> std::optional<Range> reals(const QString &text, bool bigEndian)
{
    const auto ends = endsOf(text);
    bool isLow = false, isHigh = false;
    const T from = static_cast<T>(ends.first.trimmed().toDouble(&isLow));
    const T to = static_cast<T>(ends.second.trimmed().toDouble(&isHigh));
    if (!isLow || !isHigh || !(from <= to))
        return std::nullopt;
    return Range{static_cast<int>(sizeof(T)), [from, to, bigEndian](const char *at) {
                     const Bits bits = readAs<Bits>(at, bigEndian);
                     T value;
                     std::memcpy(&value, &bits, sizeof value);
                     return value >= from && value <= to;
                 }};
}

std::optional<Range> rangeOf(const QString &text, HexPattern::Number kind, bool bigEndian)
{
    using Number = HexPattern::Number;
    switch (kind) {
    case Number::U8:
        return integers<quint8>(text, bigEndian);
    case Number::I8:
        return integers<qint8>(text, bigEndian);
    case Number::U16:
        return integers<quint16>(text, bigEndian);
    case Number::I16:
        return integers<qint16>(text, bigEndian);
    case Number::U32:
        return integers<quint32>(text, bigEndian);
    case Number::I32:
        return integers<qint32>(text, bigEndian);
    case Number::U64:
        return integers<quint64>(text, bigEndian);
    case Number::I64:
        return integers<qint64>(text, bigEndian);
    case Number::Float:
        return reals<float, quint32>(text, bigEndian);
    default:
        return reals<double, quint64>(text, bigEndian);
    }
}

} // namespace

HexPattern HexPattern::bytes(const QByteArray &bytes)
{
    HexPattern pattern;
    pattern.m_maxLength = bytes.size();
    pattern.m_bytes = bytes;
    return pattern;
}

// Read twice, with one digit and another one in the open places: where they differ, any
// digit will do.
std::optional<HexPattern> HexPattern::digits(const QString &text)
{
    QString zeros = text, ones = text;
    zeros.replace(QLatin1Char('?'), QLatin1Char('0'));
    ones.replace(QLatin1Char('?'), QLatin1Char('F'));
    const auto low = HexParse::bytes(zeros);
    const auto high = HexParse::bytes(ones);
    if (!low || !high || low->size() != high->size())
        return std::nullopt;
    if (*low == *high)
        return bytes(*low);
    HexPattern pattern;
    pattern.m_maxLength = low->size();
    QByteArray mask(low->size(), '\0');
    for (int i = 0; i < mask.size(); ++i)
        mask[i] = static_cast<char>(~(low->at(i) ^ high->at(i)));
    pattern.m_check = [values = *low, mask](const char *at) {
        for (int i = 0; i < values.size(); ++i)
            if ((at[i] & mask.at(i)) != values.at(i))
                return false;
        return true;
    };
    return pattern;
}

std::optional<HexPattern> HexPattern::number(const QString &range, Number kind, bool bigEndian)
{
    const auto numbers = rangeOf(range, kind, bigEndian);
    if (!numbers)
        return std::nullopt;
    HexPattern pattern;
    pattern.m_maxLength = numbers->bytes;
    pattern.m_check = numbers->contains;
    return pattern;
}

std::optional<HexPattern> HexPattern::expression(const QString &text, QString *fault)
{
    // The user's text is compiled alone first, so that the place of a fault is its own.
    const QRegularExpression alone(text);
    if (!alone.isValid()) {
        *fault = QStringLiteral("第%1个字符处：%2").arg(alone.patternErrorOffset()).arg(alone.errorString());
        return std::nullopt;
    }
    HexPattern pattern;
    pattern.m_maxLength = text.isEmpty() ? 0 : maxExpression;
    pattern.m_expression = std::make_shared<QRegularExpression>(
        kStepLimit + text, QRegularExpression::DotMatchesEverythingOption);
    pattern.m_expression->optimize();
    return pattern;
}

qint64 HexPattern::firstFixed(const char *data, qint64 from, qint64 end) const
{
    if (!m_check) {
        if (!m_forward)
            m_forward = forwardFinder(m_bytes);
        const qint64 hit = m_forward(data + from, data + end);
        return hit < 0 ? hit : from + hit;
    }
    for (qint64 at = from; at + m_maxLength <= end; ++at)
        if (m_check(data + at))
            return at;
    return -1;
}

// Also looks behind the place, which `text` has for it.
bool HexPattern::firstExpression(const QString &text, qint64 from, qint64 to, Match *match) const
{
    for (qint64 at = from; at < to;) {
        const QRegularExpressionMatch found =
            m_expression->match(text, static_cast<int>(at), QRegularExpression::NormalMatch,
                                QRegularExpression::DontCheckSubjectStringMatchOption);
        if (!found.isValid())
            return false;
        if (!found.hasMatch() || found.capturedStart() >= to)
            return true;
        if (found.capturedLength() > 0) {
            *match = {found.capturedStart(), found.capturedLength()};
            return true;
        }
        at = found.capturedStart() + 1;
    }
    return true;
}

bool HexPattern::first(const char *data, qint64 size, qint64 from, qint64 to, Match *match) const
{
    *match = {};
    if (m_expression)
        return firstExpression(QString::fromLatin1(data, static_cast<int>(size)), from, to, match);
    const qint64 hit = firstFixed(data, from, std::min(size, to + m_maxLength - 1));
    if (hit >= 0)
        *match = {hit, m_maxLength};
    return true;
}

bool HexPattern::last(const char *data, qint64 size, qint64 from, qint64 to, Match *match) const
{
    *match = {};
    if (m_expression) {
        const QString text = QString::fromLatin1(data, static_cast<int>(size));
        Match next;
        for (qint64 at = from; at < to; at = next.begin + 1) {
            next = {};
            if (!firstExpression(text, at, to, &next))
                return false;
            if (next.begin < 0)
                break;
            *match = next;
        }
        return true;
    }
    const qint64 end = std::min(size, to + m_maxLength - 1);
    if (!m_check) {
        if (!m_backward)
            m_backward = backwardFinder(m_bytes);
        const qint64 hit = m_backward(data + from, data + end);
        if (hit >= 0)
            *match = {from + hit, m_maxLength};
        return true;
    }
    for (qint64 at = end - m_maxLength; at >= from; --at) {
        if (m_check(data + at)) {
            *match = {at, m_maxLength};
            break;
        }
    }
    return true;
}
