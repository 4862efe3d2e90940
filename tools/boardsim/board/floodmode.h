#pragma once

#include "boardmode.h"

namespace Boardsim {

// Sends the payload as fast as the host reads it.
class FloodMode : public BoardMode
{
    Q_OBJECT

public:
    struct Options
    {
        PayloadOptions payload;
        qint64 totalBytes = -1; // for each host; -1 without end
        void addTo(CommandLine &line);
    };

    FloodMode(const Options &options, VirtualPort &port);

    void start() override;
    void stop() override;
    void outputEmpty() override;

private:
    const Payload m_fresh;
    const qint64 m_total; // bytes for each host, or -1 without end
    Payload m_payload;
    qint64 m_left = 0;
    bool m_running = false;
};

} // namespace Boardsim
