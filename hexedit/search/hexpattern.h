#pragma once

// What is looked for in bytes: a row of bytes, digits of which some may be anything, a
// number in a range, or an expression. Lengths and places are bytes. Knows no document.

#include <QByteArray>
#include <QRegularExpression>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class HexPattern
{
public:
    struct Match
    {
        qint64 begin = -1; // none
        qint64 length = 0;
    };

    enum class Number { U8, I8, U16, I16, U32, I32, U64, I64, Float, Double };

    HexPattern() = default;

    // The first search costs the square of the length at worst: a few thousand bytes are
    // fine.
    static HexPattern bytes(const QByteArray &bytes);
    // Pairs of digits as HexParse reads them, where "?" stands for any digit.
    static std::optional<HexPattern> digits(const QString &text);
    // "1000", "0x3E8", "-5..5" or, for floating point, "1.5..2": both ends belong to it.
    // Nothing where it is no number of that kind.
    static std::optional<HexPattern> number(const QString &range, Number kind, bool bigEndian);
    // A regular expression in which each byte is a character of that code. A match of up
    // to maxExpression bytes is always found. `fault`: why it is none, in Qt's words.
    static std::optional<HexPattern> expression(const QString &text, QString *fault);

    static constexpr int maxExpression = 1024;

    bool isEmpty() const { return m_maxLength == 0; }
    int maxLength() const { return m_maxLength; } // of a match
    int fixedLength() const { return m_expression ? -1 : m_maxLength; }
    // How many places one call may search, so that it takes milliseconds.
    qint64 slice() const { return m_expression ? 1024 : 1 << 18; }
    int context() const { return m_expression ? 256 : 0; } // bytes before a place that matter

    // The first match, or the last one, that begins in [from, to). False where the
    // expression took too many steps to know.
    bool first(const char *data, qint64 size, qint64 from, qint64 to, Match *match) const;
    bool last(const char *data, qint64 size, qint64 from, qint64 to, Match *match) const;

private:
    using Finder = std::function<qint64(const char *begin, const char *end)>; // -1: none
    using Check = std::function<bool(const char *at)>;

    qint64 firstFixed(const char *data, qint64 from, qint64 end) const;
    bool firstExpression(const QString &text, qint64 from, qint64 to, Match *match) const;

    int m_maxLength = 0;
    QByteArray m_bytes;
    mutable Finder m_forward; // of the bytes, made for the first search
    mutable Finder m_backward;
    Check m_check; // where they are not exact, at each place
    std::shared_ptr<QRegularExpression> m_expression;
};
