// A simulated board on a virtual serial port or on the network. Its doings go to standard output,
// one line each; the statistics of the whole run to standard error at the end.

#include "board.h"
#include "processend.h"
#include "tcpboard.h"
#include "udpboard.h"

#include <QCoreApplication>

#include <cstdio>
#include <memory>

static std::unique_ptr<Boardsim::BoardBase> makeBoard(const Boardsim::Options &options)
{
    using namespace Boardsim;
    if (options.mode == Options::Mode::Udp)
        return std::make_unique<UdpBoard>(options);
    if (options.isOnNetwork())
        return std::make_unique<TcpBoard>(options);
    return std::make_unique<Board>(options);
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("boardsim"));
    const Boardsim::Options options = Boardsim::Options::fromCommandLine(application);

    const std::unique_ptr<Boardsim::BoardBase> board = makeBoard(options);
    Boardsim::ProcessEnd end;
    QObject::connect(&end, &Boardsim::ProcessEnd::requested, &application, [] { QCoreApplication::exit(0); });
    QObject::connect(board.get(), &Boardsim::BoardBase::happened, &application, [](const QString &text) {
        std::printf("%s\n", qPrintable(text));
        std::fflush(stdout);
    });
    const auto report = [](const QString &error) {
        std::fprintf(stderr, "boardsim: %s\n", qPrintable(error));
    };
    QObject::connect(board.get(), &Boardsim::BoardBase::failed, &application, [report](const QString &error) {
        report(error);
        QCoreApplication::exit(1);
    });

    QString error;
    if (!board->begin(&error)) {
        report(error);
        return 1;
    }
    const int result = application.exec();
    std::fprintf(stderr, "%s\n", qPrintable(board->statistics()));
    return result;
}
