/*
 * Five simulated processes in place of sensors and outputs: first-order lags, the
 * first one the fastest. Replaced by the board's own two functions, for example
 *   read:  the last result of the converter or the counter of an encoder
 *   write: the duty cycle of a timer, after conversion from -1000 to 1000
 */

#include "board.h"
#include "orvn_pid.h"

static const float lags[ORVN_PID_CHANNELS] = {0.1f, 0.2f, 0.4f, 0.8f, 1.6f}; /* seconds */

static struct process
{
    float output;   /* of the controller */
    float value;    /* of the process */
    uint32_t since; /* the time of the value, milliseconds */
} processes[ORVN_PID_CHANNELS];

/* The implicit step is stable for pauses of any length. */
static void advance(uint8_t channel)
{
    struct process *process = &processes[channel - 1];
    const uint32_t now = board_millis();
    const float elapsed = (float)(now - process->since) / 1000.0f;
    process->value += (process->output - process->value) * elapsed / (lags[channel - 1] + elapsed);
    process->since = now;
}

int32_t board_read_sensor(uint8_t channel)
{
    float value;
    advance(channel);
    value = processes[channel - 1].value;
    return (int32_t)(value < 0.0f ? value - 0.5f : value + 0.5f);
}

void board_write_output(uint8_t channel, float output)
{
    advance(channel); /* the old output acted until now */
    processes[channel - 1].output = output;
}
