// A tour through the program as a user sees it: the real window, mouse and
// keyboard, simulated boards on virtual ports.
//   tour [--pictures FOLDER] [arguments of QtTest]

#include "app/apppaths.h"
#include "app/startup.h"
#include "tests/e2e/tours.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

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
    // With names of test functions only those run, in the tour that has them.
    const bool selected = arguments.size() > 1 && !arguments.at(1).startsWith(QLatin1Char('-'));

    PortTour ports;
    ReceiveTour receiving;
    SendTour sending;
    WindowTour window;
    PictureTour picturing(pictures);
    int failures = 0;
    for (Tour *tour : std::initializer_list<Tour *>{&ports, &receiving, &sending, &window, &picturing}) {
        const QString name = arguments.value(1).section(QLatin1Char(':'), 0, 0);
        if (selected && tour->metaObject()->indexOfSlot(qPrintable(name + QStringLiteral("()"))) < 0)
            continue;
        failures += QTest::qExec(tour, arguments);
    }
    return failures == 0 ? 0 : 1;
}
