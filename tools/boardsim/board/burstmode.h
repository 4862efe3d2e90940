#pragma once

#include "boardmode.h"

#include <QElapsedTimer>
#include <QTimer>

namespace Boardsim {

// Sends the payload in bursts at a mean rate, with a pause between the end of
// one burst and the beginning of the next. A host that reads a burst
// slowly delays the next one and does not get a larger one for it.
class BurstMode : public BoardMode
{
    Q_OBJECT

public:
    struct Options
    {
        PayloadOptions payload;
        qint64 totalBytes = -1; // for each host; -1 without end
        int bytesPerSecond = 92000;
        int pauseMs = 12; // between bursts
        int restMs = 0;   // twice a second, in place of a pause
        void addTo(CommandLine &line);
    };

    BurstMode(const Options &options, VirtualPort &port);

    void start() override;
    void stop() override;
    void outputEmpty() override;

private:
    void send();

    const Payload m_fresh;
    const qint64 m_total; // bytes for each host, or -1 without end
    Payload m_payload;
    qint64 m_left = 0;
    int m_bytesPerSecond;
    int m_pauseMs;
    int m_restMs;
    qint64 m_owed = 0; // remainder of the last burst, in millionths of a byte
    QElapsedTimer m_sinceBurst;
    QElapsedTimer m_sinceRest;
    QTimer m_pause;
    bool m_sending = false;
};

} // namespace Boardsim
