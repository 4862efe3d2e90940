#include "pidboard.h"

#include "payload.h"

#include <algorithm>
#include <cmath>

namespace Boardsim {

namespace {

constexpr qint32 longestPeriod = 1000; // milliseconds

// Gains as built in: each loop holds its target, none is tuned well.
struct BuiltIn
{
    Plant::Kind plant;
    float p;
    float i;
    float d;
};

constexpr BuiltIn builtIn[ORVN_PID_CHANNELS] = {
    {Plant::Kind::FirstOrder, 0.8F, 1.0F, 0.0F}, {Plant::Kind::SecondOrder, 0.2F, 1.0F, 0.0F},
    {Plant::Kind::DeadTime, 0.5F, 1.0F, 0.0F},   {Plant::Kind::Motor, 0.3F, 1.0F, 0.0F},
    {Plant::Kind::Unstable, 1.5F, 1.0F, 0.0F},
};

} // namespace

PidBoard::PidBoard(int reportsPerSecond, int noise, quint32 seed)
    : m_reportsPerSecond(reportsPerSecond)
    , m_noise(noise)
    , m_seed(seed)
{
    reset();
}

void PidBoard::reset()
{
    for (size_t k = 0; k < m_loops.size(); ++k) {
        Loop &loop = m_loops.at(k);
        loop = Loop();
        loop.plant = Plant::create(builtIn[k].plant);
        loop.p = builtIn[k].p;
        loop.i = builtIn[k].i;
        loop.d = builtIn[k].d;
        loop.controller.setGains(double(loop.p), double(loop.i), double(loop.d));
    }
}

// build(frame) writes a frame and returns its length.
template <class Build> void PidBoard::send(Build build)
{
    uint8_t frame[ORVN_PID_FRAME_MAX];
    const size_t length = build(frame);
    m_output.append(reinterpret_cast<const char *>(frame), int(length));
}

void PidBoard::greet(bool sayStopped)
{
    quint8 channel = 0;
    for (const Loop &loop : m_loops) {
        ++channel;
        send([&](uint8_t *frame) { return orvn_pid_report_target(frame, channel, loop.target); });
        send([&](uint8_t *frame) { return orvn_pid_report_gains(frame, channel, loop.p, loop.i, loop.d); });
        send([&](uint8_t *frame) { return orvn_pid_report_period(frame, channel, loop.period); });
        if (sayStopped)
            send([&](uint8_t *frame) { return orvn_pid_report_stopped(frame, channel); });
    }
}

void PidBoard::receive(const QByteArray &bytes)
{
    orvn_pid_command command;
    for (const char byte : bytes)
        if (orvn_pid_receive(&m_receiver, static_cast<uint8_t>(byte), &command))
            act(command);
}

void PidBoard::setGains(quint8 channel, Loop &loop, float p, float i, float d)
{
    loop.p = p;
    loop.i = i;
    loop.d = d;
    loop.controller.setGains(double(p), double(i), double(d));
    send([&](uint8_t *frame) { return orvn_pid_report_gains(frame, channel, p, i, d); });
}

void PidBoard::act(const orvn_pid_command &command)
{
    const quint8 channel = command.channel;
    Loop &loop = m_loops.at(channel - 1U);
    switch (command.code) {
    case ORVN_PID_SET_GAINS:
        setGains(channel, loop, command.p, command.i, command.d);
        break;
    case ORVN_PID_SET_TARGET:
        loop.target = command.value;
        send([&](uint8_t *frame) { return orvn_pid_report_target(frame, channel, loop.target); });
        break;
    case ORVN_PID_SET_PERIOD:
        // What it can't do it refuses, and says what holds.
        if (command.value >= 1 && command.value <= longestPeriod)
            loop.period = command.value;
        send([&](uint8_t *frame) { return orvn_pid_report_period(frame, channel, loop.period); });
        break;
    case ORVN_PID_START:
        loop.controller.reset();
        loop.running = true;
        loop.untilControl = 0;
        loop.reportsDue = 0;
        send([&](uint8_t *frame) { return orvn_pid_report_started(frame, channel); });
        break;
    case ORVN_PID_STOP:
        loop.running = false;
        loop.output = 0;
        send([&](uint8_t *frame) { return orvn_pid_report_stopped(frame, channel); });
        break;
    case ORVN_PID_RESET:
        // The process is put back to rest and the controller forgets.
        loop.plant = Plant::create(builtIn[channel - 1U].plant);
        loop.controller.reset();
        loop.output = 0;
        send([&](uint8_t *frame) { return orvn_pid_report_target(frame, channel, loop.target); });
        break;
    default:
        break;
    }
}

void PidBoard::advance(qint64 milliseconds)
{
    for (; milliseconds > 0; --milliseconds) {
        quint8 channel = 0;
        for (Loop &loop : m_loops)
            stepLoop(++channel, loop);
    }
}

// One millisecond of one loop.
void PidBoard::stepLoop(quint8 channel, Loop &loop)
{
    if (loop.running && --loop.untilControl <= 0) {
        loop.untilControl = loop.period;
        loop.output = loop.controller.control(loop.target, measure(loop), loop.period * Plant::step);
    }
    loop.plant->advance(loop.output);
    if (!loop.running)
        return;
    for (loop.reportsDue += m_reportsPerSecond; loop.reportsDue >= 1000; loop.reportsDue -= 1000) {
        const qint32 actual = measure(loop);
        send([&](uint8_t *frame) { return orvn_pid_report_actual(frame, channel, actual); });
        ++m_reports;
    }
}

qint32 PidBoard::measure(const Loop &loop)
{
    const quint32 random = scrambled(m_seed, m_samples++) % (2U * quint32(m_noise) + 1U);
    return qint32(std::lround(loop.plant->output())) + qint32(random) - m_noise;
}

bool PidBoard::isRunning() const
{
    return std::any_of(m_loops.begin(), m_loops.end(), [](const Loop &loop) { return loop.running; });
}

QByteArray PidBoard::takeOutput()
{
    QByteArray output;
    output.swap(m_output);
    return output;
}

} // namespace Boardsim
