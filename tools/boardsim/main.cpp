// A simulated board on a virtual serial port or on the network. Events go to
// standard output, one in a line; the statistics of the run to standard error
// at its end.
//   boardsim [--mode MODE] [options of the mode; --help lists them]

#include "boards.h"
#include "processend.h"

#include <QCoreApplication>

#include <cstdio>

using Boardsim::BoardKind;
using Boardsim::CommandLine;

namespace {

// The value of --mode, which decides what other options there are.
QString modeIn(const QStringList &arguments)
{
    const QString option = QStringLiteral("--mode");
    for (int i = 1; i < arguments.size(); ++i) {
        if (arguments.at(i) == option)
            return arguments.value(i + 1);
        if (arguments.at(i).startsWith(option + QLatin1Char('=')))
            return arguments.at(i).mid(option.size() + 1);
    }
    return QStringLiteral("log");
}

std::unique_ptr<Boardsim::BoardBase> makeBoard(const QStringList &arguments)
{
    const QString wanted = modeIn(arguments);
    QString modes;
    for (const BoardKind &kind : Boardsim::boardKinds())
        modes +=
            QStringLiteral("\n  %1  %2").arg(QLatin1String(kind.mode), -10).arg(QLatin1String(kind.help));
    const auto description =
        QStringLiteral(
            "A simulated board on a virtual serial port or on the network. Modes:%1\n\nThe options "
            "are those of mode '%2'; --mode MODE --help lists another's.")
            .arg(modes, wanted);
    for (const BoardKind &kind : Boardsim::boardKinds()) {
        if (wanted != QLatin1String(kind.mode))
            continue;
        CommandLine line(arguments, description);
        QString mode;
        line.addText("mode", "name", QStringLiteral("The mode (default: log)."), &mode);
        return kind.make(line);
    }
    CommandLine::reject(QStringLiteral("there is no mode '%1'").arg(wanted));
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("boardsim"));
    const std::unique_ptr<Boardsim::BoardBase> board = makeBoard(QCoreApplication::arguments());
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
