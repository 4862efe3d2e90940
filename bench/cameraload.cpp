// Runs the real window with its camera page shown, listening, and takes frames
// from a board in another process. Prints what came, what was shown, how long
// the user-interface thread was blocked at worst, and what memory it took. The
// port goes to standard output first: "port 4711".
//
//   cameraload [--frames N] [--seconds S] [--record KIND] [--fit] [--histogram]
//              [--health] [--resynchronize]
//
// --frames: ends when so many have come, or nothing has come for three seconds.
// --record: what is recorded, by its place in the list: 0 bytes, 1 AVI, 2 pictures.
// --fit, --histogram, --health: fits the pictures to the window; shows their histogram
// or the health of the link.
// --resynchronize: every byte may begin a packet.

#include "cameradebugwidget.h"
#include "frameshow.h"
#include "heartbeat.h"
#include "loadrun.h"
#include "processfigures.h"

#include <QAction>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <cstdio>

int main(int argc, char *argv[])
{
    LoadRun run(argc, argv, {"frames", "seconds", "record"}, {"fit", "histogram", "health", "resynchronize"});
    const qint64 expected = run.number("frames");
    const qint64 seconds = run.number("seconds");
    run.showPage(CameraDebugWidget::pageIndex);
    auto *page = run.window().findChild<CameraDebugWidget *>();
    const quint16 port = LoadRun::freePort();
    page->findChild<QLineEdit *>(QStringLiteral("editCameraPort"))->setText(QString::number(port));

    for (const auto &[flag, action] :
         {std::pair("fit", "actionFitPicture"), {"histogram", "actionHistogram"}}) {
        if (run.isSet(flag))
            page->findChild<QAction *>(QLatin1String(action))->trigger();
    }

    for (const auto &[flag, button] :
         {std::pair("health", "btnCameraHealth"), {"resynchronize", "checkResynchronize"}}) {
        if (run.isSet(flag))
            page->findChild<QAbstractButton *>(QLatin1String(button))->click();
    }
    if (run.isSet("record")) {
        page->findChild<QPushButton *>(QStringLiteral("btnRecording"))->click();
        page->findChild<QComboBox *>(QStringLiteral("comboRecordKind"))
            ->setCurrentIndex(static_cast<int>(run.number("record")));
        page->findChild<QLineEdit *>(QStringLiteral("editRecordFolder"))->setText(QStringLiteral("out"));
        page->findChild<QPushButton *>(QStringLiteral("btnRecord"))->click();
    }

    Heartbeat heartbeat;

    QElapsedTimer clock; // from the first frame
    qint64 lastFrame = 0;
    qint64 before = 0;
    double cpuBefore = 0;
    double resident = 0;
    double firstResident = 0;
    QTimer sampler;
    QObject::connect(&sampler, &QTimer::timeout, [&] {
        const qint64 frames = page->frames();
        resident = qMax(resident, ProcessFigures::residentMegabytes());
        if (!clock.isValid() && frames > 0) {
            clock.start();
            cpuBefore = ProcessFigures::cpuSeconds();
        }
        if (!clock.isValid())
            return;
        if (firstResident == 0 && clock.elapsed() > 1000)
            firstResident = ProcessFigures::residentMegabytes();
        if (frames != before)
            lastFrame = clock.elapsed();
        before = frames;
        const bool over = seconds > 0 ? clock.elapsed() > seconds * 1000
                                      : frames >= expected || clock.elapsed() - lastFrame > 3000;
        if (over)
            QCoreApplication::quit();
    });
    QTimer::singleShot(1500, [&] {
        page->SltOpenLink();
        std::printf("port %d\n", int(port));
        std::fflush(stdout);
        heartbeat.start();
        sampler.start(20);
    });
    QApplication::exec();

    const double time = double(qMax<qint64>(1, lastFrame)) / 1000;
    const FrameShow &show = page->frameShow();
    std::printf("frames received: %lld in %.2f s (%.1f a second)", page->frames(), time,
                double(page->frames()) / time);
    if (expected > 0)
        std::printf(", lost: %lld", expected - page->frames());
    std::printf("\nshown: %lld (%.1f a second), skipped: %lld, unusable: %lld\n", show.shown(),
                double(show.shown()) / time, show.skipped(), show.unusable());
    std::printf("data: %.1f MB/s, heartbeat held up at worst: %.1f ms\n",
                page->counts().value(1).toDouble() / time / 1e6, heartbeat.worst());
    std::printf("memory: %.1f MB after a second, %.1f MB at most; %.3f CPU seconds a second\n", firstResident,
                resident, (ProcessFigures::cpuSeconds() - cpuBefore) / time);
    if (run.isSet("record")) {
        page->closeLinks();
        while (!page->isClosed())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        std::printf("recording: %s\n",
                    qUtf8Printable(page->findChild<QLabel *>(QStringLiteral("labelRecordState"))->text()));
    }
    return 0;
}
