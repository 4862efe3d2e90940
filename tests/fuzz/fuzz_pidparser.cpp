// Any bytes from a board, in one piece or in several: the same reports come
// out, each within bounds, and nothing is used twice.

#include "pidparser.h"

#include <cstdint>
#include <cstdlib>

namespace {

QByteArray runs(PidParser &parser)
{
    QByteArray found;
    PidReport report;
    for (int before = -1; before != parser.size();) {
        before = parser.size();
        for (;;) {
            const PidParser::Outcome outcome = parser.next(&report);
            if (parser.size() > before)
                abort();
            if (outcome != PidParser::Outcome::Report)
                break;
            if (report.channel < 1 || report.channel > 5 || report.command > 6)
                abort();
            found += PidFrame::build(
                report.command, report.channel,
                PidFrame::int32ToBytes(report.value) + PidFrame::floatToBytes(report.gains.p) +
                    PidFrame::floatToBytes(report.gains.i) + PidFrame::floatToBytes(report.gains.d));
        }
    }
    return found;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<int>(size));
    PidParser whole;
    whole.append(bytes, 0);
    const QByteArray expected = runs(whole);

    PidParser pieces;
    QByteArray found;
    const int piece = size > 0 ? 1 + data[size - 1] % 40 : 1;
    for (int at = 0; at < bytes.size(); at += piece) {
        pieces.append(bytes.mid(at, piece), at);
        found += runs(pieces);
    }
    if (found != expected)
        abort();
    if (whole.isOverlong()) {
        const int before = whole.size();
        whole.skipHead();
        (void)runs(whole);
        if (whole.size() >= before)
            abort();
    }
    return 0;
}
