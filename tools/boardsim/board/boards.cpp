#include "boards.h"

#include "board.h"
#include "burstmode.h"
#include "cameramode.h"
#include "echomode.h"
#include "floodmode.h"
#include "logmode.h"
#include "pidmode.h"
#include "shellmode.h"
#include "tcpboard.h"
#include "udpboard.h"
#include "ymodemmode.h"

namespace Boardsim {

namespace {

template <class Mode> std::unique_ptr<BoardBase> onPort(CommandLine &line)
{
    Board::Options board;
    typename Mode::Options mode;
    board.addTo(line);
    mode.addTo(line);
    line.process();
    return std::make_unique<Board>(board,
                                   [&mode](VirtualPort &port) { return std::make_unique<Mode>(mode, port); });
}

template <bool connects> std::unique_ptr<BoardBase> onTcp(CommandLine &line)
{
    TcpOptions options;
    options.connects = connects;
    options.addTo(line);
    line.process();
    return std::make_unique<TcpBoard>(options);
}

std::unique_ptr<BoardBase> onUdp(CommandLine &line)
{
    UdpBoard::Options options;
    options.addTo(line);
    line.process();
    return std::make_unique<UdpBoard>(options);
}

} // namespace

const QVector<BoardKind> &boardKinds()
{
    static const QVector<BoardKind> kinds{
        {"log", "Prints log lines at a steady rate.", onPort<LogMode>},
        {"echo", "Returns what it receives.", onPort<EchoMode>},
        {"shell", "Answers commands; 'help' lists them.", onPort<ShellMode>},
        {"flood", "Sends the payload as fast as the host reads.", onPort<FloodMode>},
        {"silent", "Reads and counts.", onPort<SilentMode>},
        {"burst", "Sends the payload in bursts at a mean rate.", onPort<BurstMode>},
        {"pid", "Five control loops.", onPort<PidMode>},
        {"ymodem", "A boot loader that receives files by YModem.", onPort<YmodemMode>},
        {"camera", "Sends pictures and answers register requests.", onPort<CameraMode>},
        {"tcp-server", "Listens on the network.", onTcp<false>},
        {"tcp-client", "Connects to a server.", onTcp<true>},
        {"udp", "Speaks datagrams.", onUdp},
    };
    return kinds;
}

} // namespace Boardsim
