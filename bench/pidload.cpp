// Runs the real window with its PID page shown and starts all five channels of
// a board in another process (boardsim in pid mode). Prints how many reports
// came, how long the user-interface thread was blocked at worst, how often the
// chart was drawn, and what it cost in processor time and memory. The board
// prints how many it sent.
//
//   pidload --port COM3 --seconds 60 [--picture FILE]

#include "heartbeat.h"
#include "loadrun.h"
#include "piddebugwidget.h"
#include "pidplot.h"
#include "processfigures.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QTimer>

#include <cstdio>

namespace {

constexpr int kSampleMs = 10000;
constexpr quint8 kChannels = 5;

struct Sample
{
    double seconds = 0;
    quint64 reports = 0;
    int pictures = 0;
    double cpu = 0;
    double megabytes = 0;
};

} // namespace

int main(int argc, char *argv[])
{
    LoadRun run(argc, argv, {"port", "seconds", "picture"});
    const int seconds = static_cast<int>(run.number("seconds"));
    run.showPage(3); // in the window's stack
    auto *page = run.window().findChild<PidDebugWidget *>();
    auto *plot = page->findChild<PidPlot *>();
    page->findChild<QComboBox *>(QStringLiteral("comboPidPort"))->setEditText(run.text("port"));

    Heartbeat heartbeat;

    // The longest time without a picture, once points come.
    QElapsedTimer sinceDrawn;
    double longestGap = 0;
    QObject::connect(plot, &QCustomPlot::afterReplot, [&] {
        if (page->actualReports() == 0)
            return;
        if (sinceDrawn.isValid())
            longestGap = qMax(longestGap, double(sinceDrawn.nsecsElapsed()) * 1e-6);
        sinceDrawn.start();
    });

    QElapsedTimer clock;
    QVector<Sample> samples;
    const auto sample = [&] {
        samples.append({double(clock.elapsed()) / 1000, page->actualReports(), plot->pictures(),
                        ProcessFigures::cpuSeconds(), ProcessFigures::residentMegabytes()});
        if (samples.size() < 2)
            return;
        const Sample &a = samples.at(samples.size() - 2);
        const Sample &b = samples.last();
        const double time = b.seconds - a.seconds;
        if (time < 1) // the end fell on a sample
            return;
        std::printf("%5.1f s: %.0f reports/s, %.1f pictures/s, processor %.1f %%, resident %.1f MB\n",
                    b.seconds, double(b.reports - a.reports) / time, (b.pictures - a.pictures) / time,
                    100 * (b.cpu - a.cpu) / time, b.megabytes);
        std::fflush(stdout);
    };
    QTimer sampler;
    sampler.setTimerType(Qt::PreciseTimer);
    QObject::connect(&sampler, &QTimer::timeout, sample);

    const auto sendAll = [page](quint8 command) {
        for (quint8 channel = 1; channel <= kChannels; ++channel)
            page->SendPidFrame(command, channel, {});
    };
    // The window is up and idle, and the first list of ports (which closes an
    // open port) is out, before the port is opened.
    QTimer::singleShot(1500, [&] {
        page->SltOpenSerialport();
        for (quint8 channel = 1; channel <= kChannels; ++channel)
            page->SendPidFrame(0x11, channel, PidFrame::int32ToBytes(100 * channel));
        sendAll(0x12);
        clock.start();
        heartbeat.start();
        sample();
        sampler.start(kSampleMs);
    });
    QTimer::singleShot(1500 + seconds * 1000 + 50, [&] {
        sampler.stop();
        sample();
        sendAll(0x13);
    });
    // What is still under way comes.
    QTimer::singleShot(1500 + seconds * 1000 + 1100, [] { QCoreApplication::quit(); });
    QApplication::exec();

    std::printf("received %llu reports, worst stall %.1f ms, longest time without a picture %.1f ms\n",
                static_cast<unsigned long long>(page->actualReports()), heartbeat.worst(), longestGap);
    run.savePicture();
    return 0;
}
