#include "orvn_pid.h"

#include <string.h>

/* Offsets within a frame. */
enum { CHANNEL = 4, LENGTH = 5, CODE = 9, PAYLOAD = 10 };

/* Length of a frame without payload. */
#define OVERHEAD 11u

enum {
    REPORT_TARGET = 1,
    REPORT_ACTUAL = 2,
    REPORT_GAINS = 3,
    REPORT_STARTED = 4,
    REPORT_STOPPED = 5,
    REPORT_PERIOD = 6
};

static const uint8_t magic[4] = {0x4F, 0x52, 0x56, 0x4E}; /* "ORVN" */

/* Does not compile where a float is not four bytes. */
typedef char float_has_four_bytes[sizeof(float) == 4 ? 1 : -1];

static void put_u32(uint8_t *at, uint32_t value)
{
    at[0] = (uint8_t)(value & 0xFFu);
    at[1] = (uint8_t)((value >> 8) & 0xFFu);
    at[2] = (uint8_t)((value >> 16) & 0xFFu);
    at[3] = (uint8_t)((value >> 24) & 0xFFu);
}

static uint32_t get_u32(const uint8_t *at)
{
    return (uint32_t)at[0] | ((uint32_t)at[1] << 8) | ((uint32_t)at[2] << 16) | ((uint32_t)at[3] << 24);
}

/* Through memcpy: no aliasing, no conversion of the value. */
static void put_float(uint8_t *at, float value)
{
    uint32_t bits;
    memcpy(&bits, &value, sizeof bits);
    put_u32(at, bits);
}

static float get_float(const uint8_t *at)
{
    const uint32_t bits = get_u32(at);
    float value;
    memcpy(&value, &bits, sizeof value);
    return value;
}

/* By its bits: with -ffast-math, isfinite() is always true. */
static int is_finite(const uint8_t *at)
{
    return (get_u32(at) & 0x7F800000u) != 0x7F800000u;
}

static int32_t get_i32(const uint8_t *at)
{
    const uint32_t bits = get_u32(at);
    int32_t value;
    memcpy(&value, &bits, sizeof value);
    return value;
}

static uint8_t sum(const uint8_t *bytes, size_t count)
{
    uint8_t total = 0;
    size_t k;
    for (k = 0; k < count; ++k)
        total = (uint8_t)(total + bytes[k]);
    return total;
}

/* ---- receiving */

/* The length of the frame of a command; 0 where there is no such command. */
static uint32_t length_of(uint8_t code)
{
    switch (code) {
    case ORVN_PID_SET_GAINS:
        return OVERHEAD + 12u;
    case ORVN_PID_SET_TARGET:
    case ORVN_PID_SET_PERIOD:
        return OVERHEAD + 4u;
    case ORVN_PID_START:
    case ORVN_PID_STOP:
    case ORVN_PID_RESET:
        return OVERHEAD;
    default:
        return 0;
    }
}

/* Whether the bytes are the beginning of a frame, or a complete one. */
static int may_be_frame(const uint8_t *bytes, uint8_t count)
{
    const uint8_t compared = count < sizeof magic ? count : (uint8_t)sizeof magic;
    uint32_t length;
    if (memcmp(bytes, magic, compared) != 0)
        return 0;
    if (count > CHANNEL && (bytes[CHANNEL] < 1 || bytes[CHANNEL] > ORVN_PID_CHANNELS))
        return 0;
    if (count <= CODE)
        return 1;
    length = length_of(bytes[CODE]);
    if (length == 0 || length != get_u32(bytes + LENGTH))
        return 0;
    return count < length || bytes[length - 1] == sum(bytes, length - 1);
}

/* Drops bytes at the front until the rest may be (the beginning of) a frame. */
static void resynchronize(orvn_pid_receiver *receiver)
{
    uint8_t skipped = 0;
    while (skipped < receiver->count &&
           !may_be_frame(receiver->bytes + skipped, (uint8_t)(receiver->count - skipped)))
        ++skipped;
    receiver->count = (uint8_t)(receiver->count - skipped);
    memmove(receiver->bytes, receiver->bytes + skipped, receiver->count);
}

static int decode(const uint8_t *frame, orvn_pid_command *command)
{
    memset(command, 0, sizeof *command);
    command->code = frame[CODE];
    command->channel = frame[CHANNEL];
    switch (command->code) {
    case ORVN_PID_SET_GAINS:
        command->p = get_float(frame + PAYLOAD);
        command->i = get_float(frame + PAYLOAD + 4);
        command->d = get_float(frame + PAYLOAD + 8);
        return is_finite(frame + PAYLOAD) && is_finite(frame + PAYLOAD + 4) && is_finite(frame + PAYLOAD + 8);
    case ORVN_PID_SET_TARGET:
    case ORVN_PID_SET_PERIOD:
        command->value = get_i32(frame + PAYLOAD);
        return 1;
    default:
        return 1;
    }
}

void orvn_pid_receiver_reset(orvn_pid_receiver *receiver)
{
    receiver->count = 0;
}

int orvn_pid_receive(orvn_pid_receiver *receiver, uint8_t byte, orvn_pid_command *command)
{
    const uint8_t *frame;
    size_t left;
    if (receiver->count >= sizeof receiver->bytes)
        receiver->count = 0; /* not initialized */
    receiver->bytes[receiver->count++] = byte;
    resynchronize(receiver);
    /* A complete frame that ends here counts, also behind the torn beginning of
       another: a stop must not wait until the other one is complete. */
    frame = receiver->bytes;
    for (left = receiver->count; left >= OVERHEAD; --left, ++frame) {
        if (left == length_of(frame[CODE]) && may_be_frame(frame, (uint8_t)left)) {
            receiver->count = 0;
            return decode(frame, command);
        }
    }
    return 0;
}

/* ---- reports */

/* Writes everything around a payload that is already in the buffer. */
static size_t finish(uint8_t *frame, uint8_t channel, uint8_t code, size_t payload)
{
    const size_t length = payload + OVERHEAD;
    memcpy(frame, magic, sizeof magic);
    frame[CHANNEL] = channel;
    put_u32(frame + LENGTH, (uint32_t)length);
    frame[CODE] = code;
    frame[length - 1] = sum(frame, length - 1);
    return length;
}

static size_t report_number(uint8_t *frame, uint8_t channel, uint8_t code, int32_t number)
{
    put_u32(frame + PAYLOAD, (uint32_t)number);
    return finish(frame, channel, code, 4);
}

size_t orvn_pid_report_target(uint8_t *frame, uint8_t channel, int32_t target)
{
    return report_number(frame, channel, REPORT_TARGET, target);
}

size_t orvn_pid_report_actual(uint8_t *frame, uint8_t channel, int32_t actual)
{
    return report_number(frame, channel, REPORT_ACTUAL, actual);
}

size_t orvn_pid_report_gains(uint8_t *frame, uint8_t channel, float p, float i, float d)
{
    put_float(frame + PAYLOAD, p);
    put_float(frame + PAYLOAD + 4, i);
    put_float(frame + PAYLOAD + 8, d);
    return finish(frame, channel, REPORT_GAINS, 12);
}

size_t orvn_pid_report_started(uint8_t *frame, uint8_t channel)
{
    return finish(frame, channel, REPORT_STARTED, 0);
}

size_t orvn_pid_report_stopped(uint8_t *frame, uint8_t channel)
{
    return finish(frame, channel, REPORT_STOPPED, 0);
}

size_t orvn_pid_report_period(uint8_t *frame, uint8_t channel, int32_t period)
{
    return report_number(frame, channel, REPORT_PERIOD, period);
}
