#include "receivebuffer.h"

#include "textcodec.h"

namespace {

// The two ends of a cut stream may decode differently from before: at most a
// few characters around each cut.
constexpr int kEndSlack = 6;

bool isParagraphEnd(ushort unit)
{
    // The last two are a text document's own frame markers, which it turns
    // into paragraphs when text holds them.
    return unit == '\n' || unit == '\r' || unit == 0x2029 || unit == 0xFDD0 || unit == 0xFDD1;
}

struct Run
{
    int end = 0; // in `before`, exclusive
    int length = 0;
};

// The run of equal characters that ends `skip` characters before the end of
// `before`, when before[i] is compared with after[i - shift].
Run runBackwards(const QString &before, const QString &after, int shift, int skip)
{
    const int end = qMin(before.size() - skip, after.size() + shift);
    const int min = qMax(0, shift);
    const QChar *b = before.constData();
    const QChar *a = after.constData();
    int i = end;
    while (i > min && b[i - 1] == a[i - 1 - shift])
        --i;
    return {end, qMax(0, end - i)};
}

} // namespace

QString ReceiveBuffer::withPlainLineEnds(const QString &text)
{
    QString result(text.size(), Qt::Uninitialized);
    QChar *out = result.data();
    const QChar *in = text.constData();
    const int size = text.size();
    for (int i = 0; i < size; ++i) {
        const ushort unit = in[i].unicode();
        if (!isParagraphEnd(unit)) {
            *out++ = in[i];
            continue;
        }
        if (unit == '\r' && i + 1 < size && in[i + 1] == QLatin1Char('\n'))
            ++i;
        *out++ = QLatin1Char('\n');
    }
    result.truncate(static_cast<int>(out - result.constData()));
    return result;
}

ReceiveBuffer::Edit ReceiveBuffer::difference(const QString &before, const QString &after, int expectedShift)
{
    Run best;
    int bestShift = 0;
    const auto tryShift = [&](int shift) {
        const int reachable = qMin(before.size(), after.size() + shift) - qMax(0, shift);
        for (int skip = 0; skip <= kEndSlack; ++skip) {
            const Run run = runBackwards(before, after, shift, skip);
            if (run.length > best.length) {
                best = run;
                bestShift = shift;
            }
            if (best.length >= reachable - 4 * kEndSlack && best.length > 0)
                return true; // the two ends are all that differs
        }
        return false;
    };
    for (int distance = 0; distance <= 2 * kEndSlack; ++distance) {
        if (tryShift(expectedShift + distance) || tryShift(expectedShift - distance))
            break;
    }
    const int start = best.end - best.length;
    Edit edit;
    edit.frontRemoved = start;
    edit.frontInserted = after.left(start - bestShift);
    edit.backRemoved = before.size() - best.end;
    edit.backInserted = after.mid(best.end - bestShift);
    if (best.length == 0) // nothing in common
        edit = {before.size(), QString(), 0, after};
    return edit;
}

void ReceiveBuffer::append(const QByteArray &bytes)
{
    m_bytes.append(bytes);
    m_bytes.drop(m_bytes.size() - qMin(m_bytes.size(), limit));
    m_added = qMin(m_added + bytes.size(), limit);
}

ReceiveBuffer::Edit ReceiveBuffer::update(int codecIndex)
{
    const QByteArray bytes = m_bytes.view();
    const QString after = withPlainLineEnds(TextCodec::decode(bytes, codecIndex));
    // The new bytes' characters are at the end; the rest of the difference in
    // length is what left at the front.
    int added = after.size();
    if (m_added < bytes.size())
        added = withPlainLineEnds(TextCodec::decode(bytes.right(m_added), codecIndex)).size();
    m_added = 0;
    const Edit edit = difference(m_text, after, m_text.size() + added - after.size());
    m_text = after;
    return edit;
}

void ReceiveBuffer::clear()
{
    m_bytes.clear();
    m_added = 0;
    m_text.clear();
}
