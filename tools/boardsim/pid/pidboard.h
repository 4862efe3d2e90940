#pragma once

// A board with five control loops, one for each kind of plant, behind the PID
// link. Built on the firmware's link code, as a real board would be. Knows
// neither port nor clock: its owner passes bytes and time in and reads bytes out.

#include "orvn_pid.h"
#include "pidcontroller.h"
#include "plant.h"

#include <QByteArray>

#include <array>
#include <memory>

namespace Boardsim {

class PidBoard
{
public:
    // reportsPerSecond: actual values of each running loop. noise: of the
    // measurement, in units either way.
    PidBoard(int reportsPerSecond, int noise, quint32 seed);

    // As after power-on: loops at rest, gains and periods as built in.
    void reset();
    // Reports every loop's target, gains and period, as a board does that
    // wants to be seen; where asked for, also that it stands still.
    void greet(bool sayStopped);

    void receive(const QByteArray &bytes);
    void advance(qint64 milliseconds);

    // Output since the last call: complete frames.
    QByteArray takeOutput();

    // Actual values reported so far, by all loops.
    qint64 reports() const { return m_reports; }
    bool isRunning() const;

private:
    struct Loop
    {
        std::unique_ptr<Plant> plant;
        PidController controller;
        float p = 0;
        float i = 0;
        float d = 0;
        qint32 target = 0;
        qint32 period = 10; // milliseconds
        bool running = false;
        double output = 0;       // of the controller
        qint32 untilControl = 0; // milliseconds
        int reportsDue = 0;      // thousandths of a report
    };

    void act(const orvn_pid_command &command);
    void stepLoop(quint8 channel, Loop &loop);
    qint32 measure(const Loop &loop);
    void setGains(quint8 channel, Loop &loop, float p, float i, float d);
    template <class Build> void send(Build build);

    int m_reportsPerSecond;
    int m_noise;
    quint32 m_seed;
    quint32 m_samples = 0;
    qint64 m_reports = 0;
    orvn_pid_receiver m_receiver{};
    std::array<Loop, ORVN_PID_CHANNELS> m_loops;
    QByteArray m_output;
};

} // namespace Boardsim
