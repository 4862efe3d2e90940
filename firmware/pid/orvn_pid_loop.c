#include "orvn_pid_loop.h"

/* Far beyond any output, and sums of a few are far from the largest float. */
#define FAR_AWAY 1e30f

static float bounded(float value, float limit)
{
    return value > limit ? limit : value < -limit ? -limit : value;
}

/* Also of a loop that was not initialized. */
static int32_t period_of(const orvn_pid_loop *loop)
{
    return loop->period < 1 ? 1 : loop->period > ORVN_PID_PERIOD_MAX ? ORVN_PID_PERIOD_MAX : loop->period;
}

void orvn_pid_loop_obey(orvn_pid_loop *loop, const orvn_pid_command *command)
{
    switch (command->code) {
    case ORVN_PID_SET_GAINS:
        loop->p = command->p;
        loop->i = command->i;
        loop->d = command->d;
        if (loop->i == 0.0f)
            loop->integral = 0.0f; /* no offset remains of what is switched off */
        loop->pending |= ORVN_PID_LOOP_GAINS;
        break;
    case ORVN_PID_SET_TARGET:
        loop->target = command->value;
        loop->pending |= ORVN_PID_LOOP_TARGET;
        break;
    case ORVN_PID_SET_PERIOD:
        if (command->value >= 1 && command->value <= ORVN_PID_PERIOD_MAX) {
            loop->next += (uint32_t)command->value - (uint32_t)period_of(loop);
            loop->period = command->value;
        }
        loop->pending |= ORVN_PID_LOOP_PERIOD;
        break;
    case ORVN_PID_START:
        loop->used = 0;
        loop->running = 1;
        loop->pending |= ORVN_PID_LOOP_STATE;
        break;
    case ORVN_PID_STOP:
        loop->running = 0;
        loop->pending |= ORVN_PID_LOOP_STATE;
        break;
    case ORVN_PID_RESET:
        loop->used = 0;
        loop->pending |= ORVN_PID_LOOP_TARGET;
        break;
    default:
        break;
    }
}

/* Not before: of two times less than 25 days apart. */
static int is_reached(uint32_t now, uint32_t time)
{
    return now - time < 0x80000000u;
}

int orvn_pid_loop_due(orvn_pid_loop *loop, uint32_t now)
{
    const uint32_t period = (uint32_t)period_of(loop);
    if (!loop->running)
        return 0;
    if (!loop->used) {
        loop->next = now + period;
        return 1;
    }
    if (!is_reached(now, loop->next))
        return 0;
    loop->next += period;
    if (is_reached(now, loop->next)) { /* goes on from here instead of catching up */
        loop->next = now + period;
        ++loop->late;
    }
    return 1;
}

/* Each term is bounded before the sum: infinities of both signs would add up to no number. */
float orvn_pid_loop_step(orvn_pid_loop *loop, int32_t measured)
{
    const float period = (float)period_of(loop) / 1000.0f;
    const float error = (float)((int64_t)loop->target - measured);
    const float increment = bounded(loop->i * error, FAR_AWAY) * period;
    float wanted;
    if (!loop->used) {
        loop->used = 1;
        loop->last = measured;
        loop->slope = 0.0f;
        loop->integral = 0.0f;
    }
    loop->slope += period / (ORVN_PID_SMOOTHING + period) *
                   ((float)((int64_t)measured - loop->last) / period - loop->slope);
    loop->last = measured;

    wanted = bounded(loop->p * error, FAR_AWAY) + loop->integral + increment -
             bounded(loop->d * loop->slope, FAR_AWAY);
    /* Held while it would only drive the output further beyond its limit. */
    if (!(wanted > loop->limit && increment > 0.0f) && !(wanted < -loop->limit && increment < 0.0f))
        loop->integral = bounded(loop->integral + increment, FAR_AWAY);
    return bounded(wanted, loop->limit);
}

/* The frame of one pending report. */
static size_t build(const orvn_pid_loop *loop, uint8_t channel, uint8_t report, uint8_t *frame)
{
    switch (report) {
    case ORVN_PID_LOOP_STATE:
        return loop->running ? orvn_pid_report_started(frame, channel)
                             : orvn_pid_report_stopped(frame, channel);
    case ORVN_PID_LOOP_TARGET:
        return orvn_pid_report_target(frame, channel, loop->target);
    case ORVN_PID_LOOP_GAINS:
        return orvn_pid_report_gains(frame, channel, loop->p, loop->i, loop->d);
    default:
        return orvn_pid_report_period(frame, channel, period_of(loop));
    }
}

void orvn_pid_loop_report(orvn_pid_loop *loop, uint8_t channel, orvn_pid_send send)
{
    uint8_t frame[ORVN_PID_FRAME_MAX];
    uint8_t report;
    for (report = ORVN_PID_LOOP_STATE; report <= ORVN_PID_LOOP_PERIOD; report = (uint8_t)(report << 1)) {
        if (!(loop->pending & report))
            continue;
        if (!send(frame, build(loop, channel, report, frame)))
            return;
        loop->pending = (uint8_t)(loop->pending & ~report);
    }
}
