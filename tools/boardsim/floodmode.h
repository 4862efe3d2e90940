#pragma once

#include "tools/boardsim/boardmode.h"

namespace Boardsim {

// Sends the payload as fast as the host takes it.
class FloodMode : public BoardMode
{
    Q_OBJECT

public:
    FloodMode(const Options &options, VirtualPort &port);

    void start() override;
    void stop() override;
    void outputEmpty() override;

private:
    Payload m_payload;
    qint64 m_left; // bytes, or -1 without end
    bool m_running = false;
};

} // namespace Boardsim
