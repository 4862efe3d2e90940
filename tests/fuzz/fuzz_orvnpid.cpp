// Any bytes to a board: what the receiver takes for a command is one, its loop
// keeps within the limit with it, and a whole command behind them is found.

#include "orvn_pid_loop.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    orvn_pid_receiver receiver{};
    orvn_pid_command command;
    orvn_pid_loop loop = ORVN_PID_LOOP_INIT(1, 1, 1, 1, 1000);
    int32_t measured = 0;
    for (size_t k = 0; k < size; ++k) {
        if (orvn_pid_receive(&receiver, data[k], &command)) {
            if (command.channel < 1 || command.channel > ORVN_PID_CHANNELS || command.code < 0x10 ||
                command.code > 0x15 || !std::isfinite(command.p + 0 * command.i + 0 * command.d))
                abort();
            orvn_pid_loop_obey(&loop, &command);
        }
        measured = static_cast<int32_t>(static_cast<uint32_t>(measured) * 0x01010101U + data[k]);
        if (!(std::fabs(orvn_pid_loop_step(&loop, measured)) <= 1000))
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
