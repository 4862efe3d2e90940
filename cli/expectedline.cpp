#include "expectedline.h"

#include "textcodec.h"

#include <utility>

namespace {

// A line without end is judged again when it has grown by so much.
constexpr int kJudgedBytes = ExpectedLine::maxOpenBytes / 2;

} // namespace

ExpectedLine::ExpectedLine(const LineMatcher::Pattern &pattern, int codecIndex)
    : m_test(pattern)
    , m_codecIndex(codecIndex)
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
        const int room = maxOpenBytes - m_open.size();
        const int end = qMin(newLine < 0 ? bytes.size() : newLine, begin + room);
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
        } else if (m_unseen >= kJudgedBytes) {
            if (auto line = openLine())
                return line;
            m_open = m_open.right(kJudgedBytes);
        }
    }
    return {};
}

std::optional<QByteArray> ExpectedLine::openLine()
{
    if (m_unseen == 0)
        return {};
    m_unseen = 0;
    if (matches(m_open))
        return m_open;
    return {};
}
