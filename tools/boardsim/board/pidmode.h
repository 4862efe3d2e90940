#pragma once

#include "boardmode.h"
#include "pidboard.h"

#include <QElapsedTimer>
#include <QTimer>

namespace Boardsim {

// Five control loops behind the PID link, in real time; the options add faults
// of a line or a board.
class PidMode : public BoardMode
{
    Q_OBJECT

public:
    enum class Fault { None, Garbage, Glued, Cut, Flood, Silence, Reset };
    struct Options
    {
        int reportsPerSecond = 100; // of each running loop
        int noise = 2;              // of the measurement, in units either way
        Fault fault = Fault::None;
        quint32 seed = 1;
        void addTo(CommandLine &line);
    };

    PidMode(const Options &options, VirtualPort &port);

    void start() override;
    void stop() override;
    void received(const QByteArray &bytes) override;
    void outputEmpty() override;
    QString statistics() const override;

private:
    void tick();
    void send(QByteArray bytes);
    void addGarbage(QByteArray &bytes);
    void sendInPieces(const QByteArray &bytes);
    void crash();
    quint32 random(quint32 below);

    PidBoard m_board;
    Fault m_fault;
    quint32 m_seed;
    quint32 m_randoms = 0;
    QTimer m_tick;
    QElapsedTimer m_clock;
    qint64 m_advanced = 0;   // milliseconds that the board has been advanced
    qint64 m_quietUntil = 0; // by m_clock: nothing is sent
    qint64 m_nextFault = 0;
    QByteArray m_held; // glued or cut: to be sent later
};

} // namespace Boardsim
