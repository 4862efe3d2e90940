// Any bytes to a board: what the receiver takes for a command is one, and a
// whole command behind them is found.

#include "orvn_pid.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    orvn_pid_receiver receiver{};
    orvn_pid_command command;
    for (size_t k = 0; k < size; ++k) {
        if (orvn_pid_receive(&receiver, data[k], &command) &&
            (command.channel < 1 || command.channel > ORVN_PID_CHANNELS || command.code < 0x10 ||
             command.code > 0x15 || !std::isfinite(command.p + 0 * command.i + 0 * command.d)))
            abort();
        if (receiver.count >= ORVN_PID_FRAME_MAX)
            abort();
    }
    // The garbage may end in the beginning of a frame that swallows the first.
    static const uint8_t stop[] = {0x4F, 0x52, 0x56, 0x4E, 1, 11, 0, 0, 0, 0x13, 0x64};
    int found = 0;
    for (int times = 0; times < 3; ++times)
        for (const uint8_t byte : stop)
            found += orvn_pid_receive(&receiver, byte, &command) && command.code == 0x13;
    if (found == 0)
        abort();
    return 0;
}
