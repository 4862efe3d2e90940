// A tour through the program as a user sees it: the real window, mouse and
// keyboard, simulated boards on virtual ports.
//   tour [--pictures FOLDER] [arguments of QtTest]

#include "apppaths.h"
#include "startup.h"
#include "tours.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

namespace {

// The arguments without the names of other tours' test functions; empty when
// names are given and none is of this tour.
QStringList argumentsFor(const Tour &tour, const QStringList &arguments)
{
    QStringList own{arguments.first()};
    bool named = false;
    bool mine = false;
    for (const QString &argument : arguments.mid(1)) {
        const bool isName = argument.at(0).isLower();
        const QString slot = argument.section(QLatin1Char(':'), 0, 0) + QStringLiteral("()");
        const bool isMine = isName && tour.metaObject()->indexOfSlot(qPrintable(slot)) >= 0;
        named = named || isName;
        mine = mine || isMine;
        if (!isName || isMine)
            own.append(argument);
    }
    return named && !mine ? QStringList() : own;
}

} // namespace

int main(int argc, char *argv[])
{
    Startup::setAttributes();
    QApplication application(argc, argv);
    const QTemporaryDir temporary;
    AppPaths::setRoot(temporary.path());
    Startup::prepare(application);

    QStringList arguments = QCoreApplication::arguments();
    QString pictures = temporary.filePath(QStringLiteral("pictures"));
    if (const int option = arguments.indexOf(QStringLiteral("--pictures")); option > 0) {
        pictures = QDir().absoluteFilePath(arguments.value(option + 1));
        arguments.erase(arguments.begin() + option, arguments.begin() + qMin(option + 2, arguments.size()));
    }
    PortTour ports;
    ReceiveTour receiving;
    SendTour sending;
    PidTour pid;
    NetworkTour network;
    CameraTour camera;
    TransferTour transferring;
    HexTour editing;
    UpdateTour updating;
    WindowTour window;
    PictureTour picturing(pictures);
    int failures = 0;
    for (Tour *tour :
         std::initializer_list<Tour *>{&ports, &receiving, &sending, &transferring, &network, &camera, &pid,
                                       &updating, &editing, &window, &picturing}) {
        const QStringList own = argumentsFor(*tour, arguments);
        if (!own.isEmpty())
            failures += QTest::qExec(tour, own);
    }
    return failures == 0 ? 0 : 1;
}
