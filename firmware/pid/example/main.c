/*
 * A board with five control loops behind the PID link, as a program for a bare
 * microcontroller: the UART's interrupt and the main loop share two rings of bytes,
 * everything else happens in the main loop.
 *
 * A line that is full drops actual values, which are out of date by the time there
 * is room. Settings and states are reported later; commands are processed first.
 */

#include "board.h"
#include "orvn_pid_loop.h"

#define ACTUAL_MS 20u     /* 5 channels every 20 ms: 3750 bytes/s, a third of 115200 baud */
#define SETTINGS_MS 1000u /* each loop's, for a host that was opened later: 265 bytes/s */
#define LIMIT 1000.0f     /* of the outputs */

/* P, I (1/s), D (s), period (ms), limit; delete what the board does not have. */
static orvn_pid_loop loops[] = {
    ORVN_PID_LOOP_INIT(0.8f, 1.0f, 0.0f, 10, LIMIT), ORVN_PID_LOOP_INIT(0.8f, 1.0f, 0.0f, 10, LIMIT),
    ORVN_PID_LOOP_INIT(0.8f, 1.0f, 0.0f, 10, LIMIT), ORVN_PID_LOOP_INIT(0.8f, 1.0f, 0.0f, 10, LIMIT),
    ORVN_PID_LOOP_INIT(0.8f, 1.0f, 0.0f, 10, LIMIT),
};
#define LOOPS (sizeof loops / sizeof loops[0])
typedef char no_more_loops_than_channels[LOOPS <= ORVN_PID_CHANNELS ? 1 : -1];

orvn_ring board_received = ORVN_RING_INIT;
orvn_ring board_sending = ORVN_RING_INIT;
static orvn_pid_receiver receiver = ORVN_PID_RECEIVER_INIT;
static volatile uint32_t dropped_actuals; /* for the debugger */

/* A complete frame or nothing, so that no frame is ever cut. */
static int send(const uint8_t *frame, size_t length)
{
    const int accepted = orvn_ring_put_all(&board_sending, frame, length);
    board_start_sending();
    return accepted;
}

static void obey(const orvn_pid_command *command)
{
    orvn_pid_loop *loop;
    if (command->channel > LOOPS)
        return;
    loop = &loops[command->channel - 1];
    orvn_pid_loop_obey(loop, command);
    if (!loop->running || command->code == ORVN_PID_RESET)
        board_write_output(command->channel, 0.0f);
}

/* What has arrived by now and no more: commands without a pause do not delay the control. */
static void receive(void)
{
    size_t count = orvn_ring_used(&board_received);
    orvn_pid_command command;
    uint8_t byte;
    for (; count > 0 && orvn_ring_get(&board_received, &byte); --count)
        if (orvn_pid_receive(&receiver, byte, &command))
            obey(&command);
}

static void control(uint32_t now)
{
    uint8_t k;
    for (k = 0; k < LOOPS; ++k)
        if (orvn_pid_loop_due(&loops[k], now))
            board_write_output((uint8_t)(k + 1u),
                               orvn_pid_loop_step(&loops[k], board_read_sensor((uint8_t)(k + 1u))));
}

/* One loop after the other: all at once would not fit beside the actual values. */
static void repeat_settings(void)
{
    static uint8_t next;
    loops[next].pending |= ORVN_PID_LOOP_SETTINGS;
    next = (uint8_t)((next + 1u) % LOOPS);
}

static void report_settings(void)
{
    uint8_t k;
    for (k = 0; k < LOOPS; ++k)
        orvn_pid_loop_report(&loops[k], (uint8_t)(k + 1u), send);
}

static void report_actuals(void)
{
    uint8_t frame[ORVN_PID_FRAME_MAX];
    uint8_t channel;
    for (channel = 1; channel <= LOOPS; ++channel)
        if (!send(frame, orvn_pid_report_actual(frame, channel, board_read_sensor(channel))))
            dropped_actuals = dropped_actuals + 1u;
}

int main(void)
{
    uint32_t actuals_at, settings_at, now;
    uint8_t channel;
    board_init();
    for (channel = 1; channel <= LOOPS; ++channel)
        board_write_output(channel, 0.0f); /* zeroed memory need not be what stands still */
    actuals_at = settings_at = board_millis();
    for (;;) {
        receive();
        now = board_millis();
        control(now);
        if (now - settings_at >= SETTINGS_MS / LOOPS) {
            settings_at = now;
            repeat_settings();
        }
        report_settings();
        if (now - actuals_at >= ACTUAL_MS) {
            actuals_at = now;
            report_actuals();
        }
        board_wait();
    }
}
