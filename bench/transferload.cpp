// Runs the real window with its serial page's file page shown and sends a file
// by YModem to a receiver in another process. Prints how long it took, beside
// what one step of the sender every 10 ms allows on such a line, and how long
// the user-interface thread was held up at worst.
//
//   transferload --port COM3 --file NAME [--baud 115200] [--line BAUD] [--picture FILE]
//
// "--baud" is what the page sets, "--line" the speed that the line really has
// (0, the default: it takes no time).

#include "app/apppaths.h"
#include "app/startup.h"
#include "bench/heartbeat.h"
#include "bench/processfigures.h"
#include "serial/qtsendboxwidget.h"
#include "serial/serialportwidget.h"
#include "shell/base/dialoganswers.h"
#include "shell/window/mainwindow.h"
#include "transfer/ymodemfiletransmit.h"

#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <cmath>
#include <cstdio>

namespace {

constexpr double kStepSeconds = 0.01;
constexpr double kBlockBytes = 1024;
constexpr double kExchangeBits = (3 + kBlockBytes + 2 + 1) * 10; // block and ACK on the wire

// Bytes per second when each block takes whole steps.
double ceiling(double lineBaud)
{
    const double onTheWire = lineBaud > 0 ? kExchangeBits / lineBaud : 0;
    return kBlockBytes / (kStepSeconds * std::max(1.0, std::ceil(onTheWire / kStepSeconds)));
}

struct Run
{
    QElapsedTimer clock; // since block 0
    double seconds = 0;  // until the batch's end was acknowledged
    int status = -1;     // at the end
};

// Begins to send as a user does, with the port open and the file page shown.
void send(SerialportWidget *page, Run *run)
{
    page->findChild<QPushButton *>(QStringLiteral("btnOpenFiles"))->click();
    page->findChild<QPushButton *>(QStringLiteral("btnSendFiles"))->click();
    auto *driver = page->findChild<YmodemFileTransmit *>();
    if (!driver || !driver->isBusy()) {
        QCoreApplication::quit();
        return;
    }
    QObject::connect(driver, &YmodemFileTransmit::transmitStatus, page, [run](Ymodem::Status status) {
        if (status == Ymodem::Establish && !run->clock.isValid())
            run->clock.start();
        if (status < Ymodem::Finish)
            return;
        if (run->status >= 0) // the port is free again
            QCoreApplication::quit();
        else if (run->clock.isValid())
            run->seconds = double(run->clock.nsecsElapsed()) * 1e-9;
        run->status = status;
    });
}

} // namespace

int main(int argc, char *argv[])
{
    Startup::setAttributes();
    QApplication application(argc, argv);
    QCommandLineParser parser;
    for (const char *name : {"port", "file", "baud", "line", "picture"})
        parser.addOption({QLatin1String(name), QString(), QStringLiteral("value")});
    parser.process(application);
    const QString file = QFileInfo(parser.value(QStringLiteral("file"))).absoluteFilePath();

    const QTemporaryDir root;
    AppPaths::setRoot(root.path());
    Startup::prepare(application);
    MainWindow window;
    window.resize(1000, 550);
    window.show();

    auto *page = window.findChild<SerialportWidget *>();
    page->findChild<QtSendBoxWidget *>()->setCurrentPage(QtSendBoxWidget::FilePage);
    page->findChild<QComboBox *>(QStringLiteral("comboPort"))
        ->setEditText(parser.value(QStringLiteral("port")));
    if (parser.isSet(QStringLiteral("baud")))
        page->findChild<QComboBox *>(QStringLiteral("comboBaudRate"))
            ->setCurrentText(parser.value(QStringLiteral("baud")));
    DialogAnswers::instance().fileNames = [file](auto...) { return QStringList{file}; };

    Heartbeat heartbeat;

    Run run;
    double cpu = 0;
    // The window is up and idle, and the first list of ports (which closes an
    // open port) is out, before the port is opened.
    QTimer::singleShot(1500, [&] { page->SltOpenSerialport(); });
    QTimer::singleShot(2000, [&] {
        heartbeat.start();
        cpu = ProcessFigures::cpuSeconds();
        send(page, &run);
    });
    if (parser.isSet(QStringLiteral("picture"))) {
        QTimer::singleShot(5000, [&] {
            window.grab().save(parser.value(QStringLiteral("picture")));
            heartbeat.skip();
        });
    }
    QApplication::exec();

    cpu = ProcessFigures::cpuSeconds() - cpu;
    const double line = parser.value(QStringLiteral("line")).toDouble();
    const double rate = run.seconds > 0 ? double(QFileInfo(file).size()) / run.seconds : 0;
    std::printf("%.2f s, %.0f bytes/s, %.1f %% of the %.0f that 10 ms a step allow", run.seconds, rate,
                rate / ceiling(line) * 100, ceiling(line));
    if (line > 0)
        std::printf(", %.1f %% of the line", rate / line * 1000);
    std::printf(", worst stall %.1f ms, cpu %.2f s, %s\n", heartbeat.worst(), cpu,
                run.status == Ymodem::Finish ? "finished" : "FAILED");
    return run.status == Ymodem::Finish ? 0 : 1;
}
