#ifndef ORVN_PID_H
#define ORVN_PID_H

/*
 * The board's side of the PID link: parses the host's commands and builds the
 * reports that the host plots.
 *
 * C99, no allocation, no global state, independent of byte order. It knows no
 * UART: bytes are passed in one at a time (from an interrupt, if need be), frames
 * are written to a buffer of the caller. `float` must be IEEE 754 single precision.
 *
 * A frame, all numbers little-endian:
 *   "ORVN" | channel (1 byte) | length of the frame (4) | command (1) |
 *   payload | sum of all bytes before it, modulo 256 (1)
 */

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define ORVN_PID_CHANNELS 5u   /* numbered 1 to 5 */
#define ORVN_PID_FRAME_MAX 23u /* bytes of the longest frame */

/* What the host asks for. */
enum {
    ORVN_PID_SET_GAINS = 0x10,
    ORVN_PID_SET_TARGET = 0x11,
    ORVN_PID_START = 0x12,
    ORVN_PID_STOP = 0x13,
    ORVN_PID_RESET = 0x14,
    ORVN_PID_SET_PERIOD = 0x15
};

typedef struct
{
    uint8_t code;    /* one of the above */
    uint8_t channel; /* 1 to ORVN_PID_CHANNELS */
    float p, i, d;   /* of ORVN_PID_SET_GAINS; never infinite or no number, with -ffast-math neither */
    int32_t value;   /* of ORVN_PID_SET_TARGET and ORVN_PID_SET_PERIOD */
} orvn_pid_command;

/* One for each line. Zeroed, as static memory is, it is ready; elsewhere use ORVN_PID_RECEIVER_INIT. */
typedef struct
{
    uint8_t bytes[ORVN_PID_FRAME_MAX];
    uint8_t count;
} orvn_pid_receiver;

#define ORVN_PID_RECEIVER_INIT                                                                               \
    {                                                                                                        \
        {0}, 0                                                                                               \
    }

/* Drops the bytes received so far, for example after the line was down. */
void orvn_pid_receiver_reset(orvn_pid_receiver *receiver);

/*
 * Processes one received byte. Returns 1 when it completes a command, which is
 * then in *command, otherwise 0. A frame with a wrong checksum, length, channel
 * or code, or with gains that are not finite, is skipped.
 */
int orvn_pid_receive(orvn_pid_receiver *receiver, uint8_t byte, orvn_pid_command *command);

/*
 * Reports to the host. Each writes a frame to the buffer, which has room for
 * ORVN_PID_FRAME_MAX bytes, and returns the frame's length.
 */
size_t orvn_pid_report_target(uint8_t *frame, uint8_t channel, int32_t target);
size_t orvn_pid_report_actual(uint8_t *frame, uint8_t channel, int32_t actual);
size_t orvn_pid_report_gains(uint8_t *frame, uint8_t channel, float p, float i, float d);
size_t orvn_pid_report_started(uint8_t *frame, uint8_t channel);
size_t orvn_pid_report_stopped(uint8_t *frame, uint8_t channel);
size_t orvn_pid_report_period(uint8_t *frame, uint8_t channel, int32_t period);

#ifdef __cplusplus
}
#endif

#endif
