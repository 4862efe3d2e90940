#include "echoguard.h"

#include <cstring>

namespace {

bool isIn(const QByteArray &answer, const QByteArray &recent, int begin, int end)
{
    for (int at = end - answer.size(); at <= begin; ++at) { // where the answer begins
        const int from = qMax(at, 0);
        const int to = qMin(at + answer.size(), recent.size());
        if (std::memcmp(recent.constData() + from, answer.constData() + (from - at),
                        static_cast<size_t>(to - from)) == 0)
            return true;
    }
    return false;
}

} // namespace

void EchoGuard::sent(quint64 source, const QByteArray &answer, qint64 timeUs)
{
    std::deque<Sent> &answers = m_sent[source];
    answers.push_back({answer, timeUs + maxAgeUs + answer.size() * perByteUs});
    if (answers.size() > maxAnswers)
        answers.pop_front();
}

bool EchoGuard::isEcho(quint64 source, qint64 timeUs, const QByteArray &recent, int begin, int end)
{
    const auto answers = m_sent.constFind(source);
    if (answers == m_sent.constEnd() || begin < 0 || end > recent.size())
        return false;
    for (const Sent &sent : *answers)
        if (timeUs <= sent.untilUs && isIn(sent.bytes, recent, begin, end))
            return true;
    return false;
}
