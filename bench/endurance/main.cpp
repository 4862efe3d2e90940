// Runs the whole program with all five tools busy against simulated boards and
// prints, for each minute, how long the user-interface thread was blocked at
// worst, memory, open files and processor share; at the end what was lost.
// Nothing must be lost, and nothing must grow once the displays are full.
//
//   tools/with-display.sh build/release/bin/endurance [MINUTES [TOOL ...]]
//
// Tools: serial, network, camera, pid, hex (default: all), to see which one does
// what the figures show.
// The exit code is 1 where anything was lost.

#include "apppaths.h"
#include "dialoganswers.h"
#include "duty.h"
#include "heartbeat.h"
#include "mainwindow.h"
#include "processfigures.h"
#include "qttabbar.h"
#include "startup.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <vector>

namespace {

constexpr int kTools = 5;
constexpr int kSecondsOnTab = 5;

int openFiles()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System).size();
}

// The figures of each minute.
class Minutes
{
public:
    void begin()
    {
        m_beat.start();
        m_clock.start();
        m_cpu = ProcessFigures::cpuSeconds();
        std::printf("minute  worst stall  resident  open files  processor\n");
    }
    void end(int minute)
    {
        const double cpu = ProcessFigures::cpuSeconds();
        std::printf("%6d  %8.1f ms  %5.0f MB  %10d  %7.1f %%\n", minute, m_beat.takeWorst(),
                    ProcessFigures::residentMegabytes(), openFiles(),
                    (cpu - m_cpu) / (double(m_clock.restart()) / 1000) * 100);
        std::fflush(stdout);
        m_cpu = cpu;
    }
    void stop() { m_beat.stop(); }

private:
    Heartbeat m_beat;
    QElapsedTimer m_clock;
    double m_cpu = 0;
};

} // namespace

int main(int argc, char *argv[])
{
    Startup::setAttributes();
    QApplication application(argc, argv);
    const int minutes = argc > 1 ? qMax(1, std::atoi(argv[1])) : 10;

    const QTemporaryDir root;
    const QTemporaryDir work;
    QDir(work.path()).mkdir(QStringLiteral("ports"));
    qputenv("KORVEX_VIRTUAL_PORTS", (work.path() + QStringLiteral("/ports")).toLocal8Bit());
    AppPaths::setRoot(root.path());
    Startup::prepare(application);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false")); // hours of it
    DialogAnswers::instance().message = [](const QString &title, const QString &text, int) {
        std::printf("asked: %s %s\n", qPrintable(title), qPrintable(text));
        return 1;
    };
    MainWindow window;
    window.resize(1000, 550);
    window.show();

    const QStringList tools = QCoreApplication::arguments().mid(2);
    std::vector<std::unique_ptr<Duty>> duties;
    const auto add = [&](const char *tool, const auto &make) {
        if (tools.isEmpty() || tools.contains(QLatin1String(tool)))
            duties.push_back(make());
    };
    add("serial", [&] { return makeSerialDuty(window, work.path()); });
    add("network", [&] { return makeNetworkDuty(window); });
    add("camera", [&] { return makeCameraDuty(window); });
    add("pid", [&] { return makePidDuty(window); });
    add("hex", [&] { return makeHexDuty(window, work.path()); });
    for (const auto &duty : duties)
        duty->prepare();

    Minutes figures;
    int second = 0;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        // Everything is seen, as by a user who goes from tool to tool.
        if (second % kSecondsOnTab == 0)
            emit window.findChild<QtTabBar *>()->clicked(second / kSecondsOnTab % kTools, QString());
        for (const auto &duty : duties)
            duty->tick(second);
        if (++second % 60 == 0)
            figures.end(second / 60);
        if (second == minutes * 60) {
            ticker.stop();
            figures.stop();
            for (const auto &duty : duties)
                duty->stop();
            QTimer::singleShot(3000, &application, &QCoreApplication::quit);
        }
    });
    // The first list of ports, which closes an open port, is out by then.
    QTimer::singleShot(2500, &window, [&] {
        for (const auto &duty : duties)
            duty->begin();
        figures.begin();
        ticker.start(1000);
    });
    QApplication::exec();

    qint64 faults = 0;
    for (const auto &duty : duties) {
        std::printf("%s", qPrintable(duty->result()));
        faults += duty->faults();
    }
    std::printf("%s\n", faults == 0 ? "nothing was lost" : "SOMETHING WAS LOST");
    return faults == 0 ? 0 : 1;
}
