// A simulated board on a virtual serial port. Its doings go to standard output,
// one line each; the statistics of the whole run to standard error at the end.

#include "tools/boardsim/board.h"
#include "tools/boardsim/processend.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("boardsim"));
    const Boardsim::Options options = Boardsim::Options::fromCommandLine(application);

    Boardsim::Board board(options);
    Boardsim::ProcessEnd end;
    QObject::connect(&end, &Boardsim::ProcessEnd::requested, &application, [] { QCoreApplication::exit(0); });
    QObject::connect(&board, &Boardsim::Board::event, &application, [](const QString &text) {
        std::printf("%s\n", qPrintable(text));
        std::fflush(stdout);
    });
    const auto report = [](const QString &error) {
        std::fprintf(stderr, "boardsim: %s\n", qPrintable(error));
    };
    QObject::connect(&board, &Boardsim::Board::failed, &application, [report](const QString &error) {
        report(error);
        QCoreApplication::exit(1);
    });

    QString error;
    if (!board.begin(&error)) {
        report(error);
        return 1;
    }
    const int result = application.exec();
    std::fprintf(stderr, "%s\n", qPrintable(board.statistics()));
    return result;
}
