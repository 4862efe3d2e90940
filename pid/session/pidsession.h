#pragma once

// The conversation with one board: builds no frame and opens no port, but knows
// which commands have which payload and what a report means for the recorder.
// Remembers the channels that were started from here, since a motor may be
// turning. Times are microseconds since 1970. Knows no widget.

#include "pidreceiver.h"
#include "pidrecorder.h"

class PidSession : public QObject
{
    Q_OBJECT

public:
    explicit PidSession(PidRecorder *recorder, QObject *parent = nullptr);

    // The way to the board was opened or closed: drops pending bytes, which could
    // block those of the next connection, and forgets what was started.
    void setOpen(bool open);
    // While paused, actual values are recorded, but not shown.
    void setPaused(bool paused) { m_isPaused = paused; }

    void receive(const QByteArray &bytes, qint64 arrivalUs);
    void parse() { m_receiver.parse(); }

    // Channels from 0. Gains and target are stored even where the way is closed
    // and nothing is sent; a period is the board's to report.
    void sendGains(int channel, const PidGains &gains, qint64 us);
    void sendTarget(int channel, qint32 target, qint64 us);
    void sendPeriod(int channel, qint32 period, qint64 us);
    void start(int channel, qint64 us);
    void stop(int channel, qint64 us);
    void reset(int channel);
    // Stops every channel that was started from here, and the selected one too
    // where it runs, whether the board or this program started it.
    void stopAll(int selected, bool selectedRuns, qint64 us);

signals:
    void command(PidFrame::Command command, int channel, const QByteArray &payload);
    // Any report but an actual value; the recorder has it already.
    void reported(const PidReport &report);
    void lengthSkipped(); // see PidReceiver
    void blocked();

private:
    bool act(const PidReport &report);
    void send(PidFrame::Command command, const PidEvent &event, const QByteArray &payload = {});

    PidRecorder *m_recorder;
    PidReceiver m_receiver;
    std::array<bool, PidRecorder::channels> m_startedHere{}; // and not stopped since
    bool m_isOpen = false;
    bool m_isPaused = false;
};
