#include "boardmode.h"

#include "burstmode.h"
#include "cameramode.h"
#include "echomode.h"
#include "floodmode.h"
#include "logmode.h"
#include "pidmode.h"
#include "shellmode.h"
#include "ymodemmode.h"

namespace Boardsim {

BoardMode::BoardMode(VirtualPort &port)
    : m_port(port)
{
}

std::unique_ptr<BoardMode> BoardMode::create(const Options &options, VirtualPort &port)
{
    switch (options.mode) {
    case Options::Mode::Log:
        return std::make_unique<LogMode>(options, port);
    case Options::Mode::Echo:
        return std::make_unique<EchoMode>(port);
    case Options::Mode::Shell:
        return std::make_unique<ShellMode>(options, port);
    case Options::Mode::Flood:
        return std::make_unique<FloodMode>(options, port);
    case Options::Mode::Burst:
        return std::make_unique<BurstMode>(options, port);
    case Options::Mode::Pid:
        return std::make_unique<PidMode>(options, port);
    case Options::Mode::Ymodem:
        return std::make_unique<YmodemMode>(options, port);
    case Options::Mode::Camera:
        return std::make_unique<CameraMode>(options, port);
    case Options::Mode::Silent:
    case Options::Mode::TcpServer: // boards without a port
    case Options::Mode::TcpClient:
    case Options::Mode::Udp:
        break;
    }
    return std::make_unique<BoardMode>(port);
}

} // namespace Boardsim
