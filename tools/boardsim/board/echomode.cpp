#include "echomode.h"

namespace Boardsim {

// With more than this to return, the board reads nothing new: a host that
// sends and does not read is held up instead of filling the memory.
static constexpr qsizetype mostQueued = 1 << 18;

void EchoMode::received(const QByteArray &bytes)
{
    port().write(bytes);
    if (port().queued() > mostQueued)
        port().setReading(false);
}

void EchoMode::outputEmpty()
{
    port().setReading(true);
}

} // namespace Boardsim
