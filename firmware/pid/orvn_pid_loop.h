#ifndef ORVN_PID_LOOP_H
#define ORVN_PID_LOOP_H

/*
 * One control loop behind the PID link: obeys the host's commands, computes the
 * output once per period and knows which of its settings are to be reported.
 *
 * C99, float, no allocation, no global state. It reads no clock and no sensor: time
 * and measured values are passed in, the output is returned.
 *
 * The controller has the parallel form
 *   output = P * error + I * integral of the error - D * slope of the measured value
 * with times in seconds. The slope is that of the measurement, smoothed by a first-order
 * lag, so that a step of the target does not kick. The output is limited either way, and
 * while it is limited the integral does not wind up. No gains, target or measured
 * value make it infinite or no number, also where the compiler assumes that
 * neither exists (-ffast-math).
 */

#include "orvn_pid.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ORVN_PID_PERIOD_MAX 1000 /* milliseconds; the shortest period is 1 */

#ifndef ORVN_PID_SMOOTHING
#define ORVN_PID_SMOOTHING 0.02f /* time constant of the slope, seconds */
#endif

/* What is to be reported, as bits of `pending`. */
enum {
    ORVN_PID_LOOP_STATE = 1, /* started or stopped */
    ORVN_PID_LOOP_TARGET = 2,
    ORVN_PID_LOOP_GAINS = 4,
    ORVN_PID_LOOP_PERIOD = 8,
    ORVN_PID_LOOP_SETTINGS = ORVN_PID_LOOP_TARGET | ORVN_PID_LOOP_GAINS | ORVN_PID_LOOP_PERIOD
};

/* Initialized by ORVN_PID_LOOP_INIT. Zeroed, it has a limit of 0, so that its output is 0. */
typedef struct
{
    float p, i, d;
    float limit;     /* of the output, either way */
    int32_t period;  /* milliseconds */
    int32_t target;  /* in the unit of the measured values */
    uint8_t running; /* 0 or 1 */
    uint8_t pending; /* what is to be reported */
    uint8_t used;    /* 0: forgets the past at the next step */
    int32_t last;    /* measured */
    float slope;     /* of the measured value, units per second */
    float integral;  /* in units of the output */
    uint32_t next;   /* when the next step is due, milliseconds */
    uint32_t late;   /* how often the main loop was too slow and steps were skipped; for the debugger */
} orvn_pid_loop;

/* i in 1/s, d in s, period in milliseconds. Stopped, as is reported at power-on with all settings. */
#define ORVN_PID_LOOP_INIT(p, i, d, period, limit)                                                           \
    {                                                                                                        \
        (p), (i), (d), (limit), (period), 0, 0, ORVN_PID_LOOP_STATE | ORVN_PID_LOOP_SETTINGS, 0, 0, 0.0f,    \
            0.0f, 0, 0                                                                                       \
    }

/* A period outside of 1 to ORVN_PID_PERIOD_MAX is refused: the one that holds is reported. */
void orvn_pid_loop_obey(orvn_pid_loop *loop, const orvn_pid_command *command);

/* Whether a step is due at a time in milliseconds, which may wrap. Returns 1 once per period. */
int orvn_pid_loop_due(orvn_pid_loop *loop, uint32_t now);

/* The output for the next period. */
float orvn_pid_loop_step(orvn_pid_loop *loop, int32_t measured);

/*
 * Sends what is pending. `send` sends a complete frame and returns 1, or nothing and
 * returns 0; what it refuses stays pending. Settings that changed more than once in
 * between are reported once, as they are.
 */
typedef int (*orvn_pid_send)(const uint8_t *frame, size_t length);
void orvn_pid_loop_report(orvn_pid_loop *loop, uint8_t channel, orvn_pid_send send);

#ifdef __cplusplus
}
#endif

#endif
