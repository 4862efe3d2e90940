// Shows the update dialog and downloads the package of the server that
// KORVEX_UPDATE_SERVER names. Prints time, rate, the worst stall of the
// user-interface thread and how much the resident memory grew.
//
//   updateload FOLDER        the package goes to FOLDER/download

#include "apppaths.h"
#include "processfigures.h"
#include "qtupdatedialog.h"
#include "startup.h"

#include <QApplication>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

#include <cstdio>

int main(int argc, char **argv)
{
    Startup::setAttributes();
    QApplication application(argc, argv);
    AppPaths::setRoot(QCoreApplication::arguments().value(1, QStringLiteral(".")));
    Startup::prepare(application);
    QtUpdateDialog dialog;
    dialog.show();
    auto *update = dialog.findChild<QPushButton *>(QStringLiteral("btnUpdate"));

    QElapsedTimer clock;
    qint64 worstNs = 0;
    double residentBefore = 0;
    QElapsedTimer sinceBeat;
    QTimer heartbeat;
    heartbeat.setTimerType(Qt::PreciseTimer);
    bool started = false;
    QObject::connect(&heartbeat, &QTimer::timeout, &application, [&] {
        if (started)
            worstNs = qMax(worstNs, sinceBeat.nsecsElapsed() - 5000000);
        sinceBeat.start();
        if (!update->isEnabled())
            return;
        if (started) {
            QCoreApplication::quit();
            return;
        }
        started = true;
        residentBefore = ProcessFigures::residentMegabytes();
        clock.start();
        sinceBeat.start();
        update->click();
    });
    heartbeat.start(5);
    QTimer::singleShot(100000, &application, &QCoreApplication::quit);
    application.exec();

    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    qint64 size = 0;
    QDirIterator files(AppPaths::root() + QStringLiteral("/download"), QDir::Files);
    while (files.hasNext()) {
        files.next();
        size += files.fileInfo().size();
    }
    const QByteArray status =
        dialog.findChild<QLabel *>(QStringLiteral("labelUpdateStatus"))->text().toUtf8();
    std::printf("%.2f s, %.0f MB/s, worst stall %.1f ms, memory %+.1f MB, \"%s\"\n", seconds,
                static_cast<double>(size) / seconds / 1e6, static_cast<double>(worstNs) / 1e6,
                ProcessFigures::residentMegabytes() - residentBefore, status.constData());
    return 0;
}
