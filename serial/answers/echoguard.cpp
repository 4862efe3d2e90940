#include "echoguard.h"

#include <cstring>

namespace {

constexpr int kLong = 1024; // bytes

// As far as the answer, put at the place, overlaps with the bytes.
bool isAt(const QByteArray &answer, const QByteArray &bytes, int at)
{
    const int from = qMax(at, 0);
    const int to = qMin(at + answer.size(), bytes.size());
    return std::memcmp(bytes.constData() + from, answer.constData() + (from - at),
                       static_cast<size_t>(to - from)) == 0;
}

} // namespace

void EchoGuard::sent(quint64 source, const QByteArray &answer, qint64 timeUs)
{
    std::deque<Sent> &answers = m_sent[source];
    answers.push_back({answer, timeUs + maxAgeUs + answer.size() * perByteUs});
    if (answers.size() > maxAnswers)
        answers.pop_front();
}

bool EchoGuard::isEcho(quint64 source, qint64 timeUs, const Received &received, qint64 begin, qint64 end)
{
    const auto answers = m_sent.find(source);
    if (answers == m_sent.end() || begin < received.first || end > received.first + received.bytes.size())
        return false;
    for (Sent &sent : *answers) {
        if (timeUs > sent.untilUs)
            continue;
        // The beginning of a long one is no longer among the bytes received.
        const bool isLong = sent.bytes.size() > received.bytes.size() && received.bytes.size() > kLong;
        const qint64 first = end - sent.bytes.size();
        for (qint64 at = isLong ? first : qMax(first, received.first); at <= begin; ++at) {
            if ((sent.echoAt >= 0 && sent.echoAt != at) ||
                !isAt(sent.bytes, received.bytes, static_cast<int>(at - received.first)))
                continue;
            sent.echoAt = at;
            return true;
        }
    }
    return false;
}
