#pragma once

// How long to wait before a connection is tried again: 0.5, 1, 2, 4, 8, 8 ... s, and
// from the beginning after a connection that held. Knows the times that the caller
// passes, in milliseconds of any clock that only moves forward.

#include <QtGlobal>

class RetryDelay
{
public:
    static constexpr int firstMs = 500;
    static constexpr int maxMs = 8000;
    // A peer that accepts and closes at once is not called every half second.
    static constexpr int heldMs = 3000;

    void reset() { m_nextMs = firstMs; }
    void opened(qint64 nowMs) { m_openedMs = nowMs; }
    // The connection has ended, or could not be made: milliseconds until the next
    // attempt.
    int failed(qint64 nowMs);

private:
    int m_nextMs = firstMs;
    qint64 m_openedMs = -1; // below 0: not since the last failure
};
