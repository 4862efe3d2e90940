#include "answerpacer.h"

#include <algorithm>
#include <utility>

namespace {
constexpr qint64 kSecondUs = 1000LL * 1000;
} // namespace

bool AnswerPacer::add(const Answer &answer, qint64 dueUs)
{
    if (pending() >= maxPending || m_pendingBytes + answer.bytes.size() > maxPendingBytes)
        return false;
    m_pending.emplace(dueUs, answer);
    m_pendingBytes += answer.bytes.size();
    return true;
}

bool AnswerPacer::has(quint64 source) const
{
    return std::any_of(m_pending.begin(), m_pending.end(),
                       [source](const auto &entry) { return entry.second.source == source; });
}

std::optional<qint64> AnswerPacer::nextUs() const
{
    if (m_pending.empty())
        return {};
    return m_pending.begin()->first;
}

std::optional<AnswerPacer::Answer> AnswerPacer::popDue(qint64 nowUs)
{
    while (!m_left.empty() && m_left.front() <= nowUs - kSecondUs)
        m_left.pop_front();
    while (!m_pending.empty() && m_pending.begin()->first <= nowUs) {
        const Answer answer = std::move(m_pending.begin()->second);
        m_pending.erase(m_pending.begin());
        m_pendingBytes -= answer.bytes.size();
        if (static_cast<int>(m_left.size()) < m_limit) {
            m_left.push_back(nowUs);
            return answer;
        }
        ++m_overLimit;
    }
    return {};
}

int AnswerPacer::popOverLimit()
{
    return std::exchange(m_overLimit, 0);
}

int AnswerPacer::drop(quint64 source)
{
    const int before = pending();
    for (auto entry = m_pending.begin(); entry != m_pending.end();) {
        if (entry->second.source != source) {
            ++entry;
            continue;
        }
        m_pendingBytes -= entry->second.bytes.size();
        entry = m_pending.erase(entry);
    }
    return before - pending();
}

int AnswerPacer::dropAll()
{
    const int dropped = pending();
    m_pending.clear();
    m_pendingBytes = 0;
    return dropped;
}
