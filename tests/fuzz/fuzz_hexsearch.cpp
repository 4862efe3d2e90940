// The search beside a search that anybody can check. The first bytes say how
// long the pattern is and where to begin; the document comes in small blocks
// and has an edit in its middle.

#include "hexsearch.h"

#include <cstdint>
#include <cstdlib>

namespace {

qint64 found(const HexDocument &document, const HexPattern &pattern, int from, HexSearch::Direction direction)
{
    HexSearch search(document, pattern, from, direction);
    HexSearch::State state = HexSearch::State::Running;
    while (state == HexSearch::State::Running)
        state = search.step();
    return state == HexSearch::State::Found ? search.position() : -1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 3 || size > 4096)
        return 0;
    QByteArray bytes(reinterpret_cast<const char *>(data) + 2, static_cast<int>(size) - 2);
    const QByteArray pattern = bytes.left(1 + data[0] % 16);
    HexDocument document;
    for (int at = 0; at < bytes.size(); at += 7)
        document.appendContent(bytes.mid(at, 7));
    document.replace(bytes.size() / 2, 1, "ab");
    bytes.replace(bytes.size() / 2, 1, "ab");
    const int from = data[1] % (bytes.size() + 1);

    int next = bytes.indexOf(pattern, from);
    if (next < 0)
        next = bytes.indexOf(pattern);
    int previous = from > 0 ? bytes.lastIndexOf(pattern, from - 1) : -1;
    if (previous < 0)
        previous = bytes.lastIndexOf(pattern);
    // The same bytes in four ways: whole, their first digits alone, and as an expression.
    QString expression, digits = QString::fromLatin1(pattern.toHex());
    for (const char byte : pattern)
        expression += QStringLiteral("\\x%1").arg(uchar(byte), 2, 16, QLatin1Char('0'));
    QString fault;
    for (const auto &same : {HexPattern::bytes(pattern), *HexPattern::digits(digits),
                             *HexPattern::expression(expression, &fault)})
        if (found(document, same, from, HexSearch::Forward) != next ||
            found(document, same, from, HexSearch::Backward) != previous)
            abort();
    digits[digits.size() - 1] = QLatin1Char('?');
    const qint64 open = found(document, *HexPattern::digits(digits), from, HexSearch::Forward);
    if ((open < 0) != (next < 0) && next >= 0)
        abort();
    if (open >= 0) {
        QByteArray there = bytes.mid(int(open), pattern.size());
        there[there.size() - 1] = char((there.back() & 0xF0) | (pattern.back() & 0x0F));
        if (there != pattern)
            abort();
    }
    return 0;
}
