#pragma once

// Answers that are to be sent after a delay, and how many of them may leave in a second.
// Times are microseconds of the caller's clock.

#include <QByteArray>
#include <QVector>

#include <deque>
#include <map>
#include <optional>

class AnswerPacer
{
public:
    static constexpr int maxPending = 1000;
    static constexpr qint64 maxPendingBytes = 4LL * 1024 * 1024;

    struct Answer
    {
        quint64 source = 0;
        QByteArray bytes;
    };

    void setLimit(int perSecond) { m_limit = perSecond; }

    // False where too much is pending already.
    bool add(const Answer &answer, qint64 dueUs);
    bool has(quint64 source) const;
    int pending() const { return static_cast<int>(m_pending.size()); }
    // When the next one is due; none where nothing is pending.
    std::optional<qint64> nextUs() const;
    // The next one that is due and within the limit.
    std::optional<Answer> popDue(qint64 nowUs);
    // How many were dropped since the last call because of the limit.
    int popOverLimit();

    // Drops what is pending; returns how many that were.
    int drop(quint64 source);
    int dropAll();

private:
    std::multimap<qint64, Answer> m_pending; // by the time; of the same one in their order
    qint64 m_pendingBytes = 0;
    std::deque<qint64> m_left; // when answers left, within the last second
    int m_limit = 1;
    int m_overLimit = 0;
};
