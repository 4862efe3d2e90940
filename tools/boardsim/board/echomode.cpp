#include "echomode.h"

namespace Boardsim {

// With more than this pending, the board stops reading, so that a host that
// sends and does not read is paused instead of filling the memory.
static constexpr qsizetype maxQueued = 1 << 18;

void EchoMode::received(const QByteArray &bytes)
{
    port().write(bytes);
    if (port().queued() > maxQueued)
        port().setReading(false);
}

void EchoMode::outputEmpty()
{
    port().setReading(true);
}

} // namespace Boardsim
