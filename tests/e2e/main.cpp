// Tours through the program as a user sees it: the real window, mouse and
// keyboard, simulated boards. One path through each tool, and what only a
// window shows; details belong to the tests of the folders.
//   tour [names of test functions and other arguments of QtTest]

#include "apppaths.h"
#include "startup.h"
#include "tours.h"

#include <QApplication>
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
        const bool isMine = isName && tour.metaObject()->indexOfSlot(qPrintable(argument + "()")) >= 0;
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
    LinkTour links;
    PidTour pid;
    HexTour editing;
    WindowTour window;
    int failures = 0;
    for (Tour *tour : std::initializer_list<Tour *>{&links, &pid, &editing, &window}) {
        const QStringList own = argumentsFor(*tour, QCoreApplication::arguments());
        if (!own.isEmpty())
            failures += QTest::qExec(tour, own);
    }
    return failures == 0 ? 0 : 1;
}
