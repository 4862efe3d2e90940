#include "expectedline.h"

#include "textcodec.h"

#include <utility>

namespace {

// A line without end is judged first at this size, and then when it has doubled or
// half of what is kept is new. No expression gets less.
constexpr int kFirstBytes = 4 * 1024;
// Judging a line should not take longer.
constexpr qint64 kMaxJudgingUs = 200LL * 1000;

} // namespace

ExpectedLine::ExpectedLine(const LineMatcher::Pattern &pattern, int codecIndex, std::function<qint64()> nowUs)
    : m_test(pattern)
    , m_codecIndex(codecIndex)
    , m_nowUs(std::move(nowUs))
{
}

bool ExpectedLine::matches(const QByteArray &line)
{
    return m_test.matches(TextCodec::decode(line, m_codecIndex));
}

std::optional<QByteArray> ExpectedLine::add(const QByteArray &bytes)
{
    for (int begin = 0; begin < bytes.size();) {
        const int newLine = bytes.indexOf('\n', begin);
        const int seen = m_open.size() - m_unseen;
        const int step = qMin(qMax(kFirstBytes, seen), m_maxBytes / 2);
        const int end = qMin(newLine < 0 ? bytes.size() : newLine, begin + step - m_unseen);
        m_open.append(bytes.constData() + begin, end - begin);
        m_unseen += end - begin;
        begin = end;
        if (end == newLine) {
            ++begin;
            QByteArray line = std::exchange(m_open, {});
            m_unseen = 0;
            while (line.endsWith('\r'))
                line.chop(1);
            if (matches(line))
                return line;
        } else if (m_unseen >= step) {
            if (auto line = openLine())
                return line;
        }
    }
    return {};
}

std::optional<QByteArray> ExpectedLine::openLine()
{
    if (m_unseen == 0)
        return {};
    m_unseen = 0;
    const qint64 startUs = m_nowUs();
    if (matches(m_open))
        return m_open;
    adapt(m_nowUs() - startUs);
    return {};
}

void ExpectedLine::adapt(qint64 us)
{
    if (us > kMaxJudgingUs)
        m_maxBytes = qBound(kFirstBytes, m_open.size() / 2, m_maxBytes);
    if (m_open.size() > m_maxBytes / 2)
        m_open = m_open.right(m_maxBytes / 2);
}
