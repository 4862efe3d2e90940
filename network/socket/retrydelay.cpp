#include "retrydelay.h"

#include <utility>

int RetryDelay::failed(qint64 nowMs)
{
    const qint64 openedMs = std::exchange(m_openedMs, -1);
    if (openedMs >= 0 && nowMs - openedMs >= heldMs)
        reset();
    return std::exchange(m_nextMs, qMin(2 * m_nextMs, maxMs));
}
