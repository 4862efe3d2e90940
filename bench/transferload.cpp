// Runs the real window with its serial page's file page shown and sends a file
// by YModem to a receiver in another process. Prints how long it took, beside
// what one step of the sender every 10 ms allows on such a line, and how long
// the user-interface thread was blocked at worst.
//
//   transferload --port COM3 --file NAME [--baud 115200] [--line BAUD] [--quick] [--picture FILE]
//   transferload --port COM3 --receive FOLDER --file NAME ...
//
// "--quick" follows answers at once. "--receive" receives the file, whose size is known
// from "--file", into a folder.
// "--baud" is what the page sets, "--line" the speed that the line really has
// (0, the default: it takes no time).

#include "dialoganswers.h"
#include "filereceive.h"
#include "filetransfer.h"
#include "heartbeat.h"
#include "loadrun.h"
#include "processfigures.h"
#include "qtsendboxwidget.h"
#include "serialportwidget.h"
#include "ymodemfiletransmit.h"

#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QPushButton>
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

struct Sending
{
    QElapsedTimer clock; // since block 0
    double seconds = 0;  // until the batch's end was acknowledged
    int status = -1;     // at the end
};

// Begins to send as a user does, with the port open and the file page shown.
void send(SerialportWidget *page, Sending *sending)
{
    page->findChild<QPushButton *>(QStringLiteral("btnOpenFiles"))->click();
    page->findChild<QPushButton *>(QStringLiteral("btnSendFiles"))->click();
    auto *driver = page->findChild<YmodemFileTransmit *>();
    if (!driver || !driver->isBusy()) {
        QCoreApplication::quit();
        return;
    }
    QObject::connect(driver, &YmodemFileTransmit::transmitStatus, page, [sending](Ymodem::Status status) {
        if (status == Ymodem::Establish && !sending->clock.isValid())
            sending->clock.start();
        if (status < Ymodem::Finish)
            return;
        if (sending->status >= 0) // the port is free again
            QCoreApplication::quit();
        else if (sending->clock.isValid())
            sending->seconds = double(sending->clock.nsecsElapsed()) * 1e-9;
        sending->status = status;
    });
}

// The same for receiving: from the first packet on.
void receive(SerialportWidget *page, Sending *sending)
{
    page->findChild<QPushButton *>(QStringLiteral("btnReceiveFiles"))->click();
    const FileReceive *driver = page->findChild<FileTransfer *>()->receiver();
    if (!driver || !driver->isBusy()) {
        QCoreApplication::quit();
        return;
    }
    QObject::connect(driver, &FileReceive::fileStarted, page, [sending] { sending->clock.start(); });
    QObject::connect(driver, &FileReceive::ended, page, [sending](Ymodem::Status status) {
        if (sending->status >= 0)
            QCoreApplication::quit();
        else if (sending->clock.isValid())
            sending->seconds = double(sending->clock.nsecsElapsed()) * 1e-9;
        sending->status = status;
    });
}

} // namespace

int main(int argc, char *argv[])
{
    LoadRun run(argc, argv, {"port", "file", "baud", "line", "picture", "receive"}, {"quick"});
    const QString file = QFileInfo(run.text("file")).absoluteFilePath();

    auto *page = run.window().findChild<SerialportWidget *>();
    page->findChild<QtSendBoxWidget *>()->setCurrentPage(QtSendBoxWidget::FilePage);
    page->findChild<QComboBox *>(QStringLiteral("comboPort"))->setEditText(run.text("port"));
    if (run.isSet("baud"))
        page->findChild<QComboBox *>(QStringLiteral("comboBaudRate"))->setCurrentText(run.text("baud"));
    const QString answer = run.isSet("receive") ? run.text("receive") : file;
    DialogAnswers::instance().fileNames = [answer](auto...) { return QStringList{answer}; };
    page->findChild<QCheckBox *>(QStringLiteral("checkQuick"))->setChecked(run.isSet("quick"));

    Heartbeat heartbeat;

    Sending sending;
    double cpu = 0;
    // The window is up and idle, and the first list of ports (which closes an
    // open port) is out, before the port is opened.
    QTimer::singleShot(1500, [&] { page->SltOpenSerialport(); });
    QTimer::singleShot(2000, [&] {
        heartbeat.start();
        cpu = ProcessFigures::cpuSeconds();
        run.isSet("receive") ? receive(page, &sending) : send(page, &sending);
    });
    if (run.isSet("picture")) {
        QTimer::singleShot(5000, [&] {
            run.savePicture();
            heartbeat.skip();
        });
    }
    QApplication::exec();

    cpu = ProcessFigures::cpuSeconds() - cpu;
    const double line = run.text("line").toDouble();
    const double rate = sending.seconds > 0 ? double(QFileInfo(file).size()) / sending.seconds : 0;
    std::printf("%.2f s, %.0f bytes/s, %.1f %% of the %.0f that 10 ms a step allow", sending.seconds, rate,
                rate / ceiling(line) * 100, ceiling(line));
    if (line > 0)
        std::printf(", %.1f %% of the line", rate / line * 1000);
    std::printf(", worst stall %.1f ms, cpu %.2f s, %s\n", heartbeat.worst(), cpu,
                sending.status == Ymodem::Finish ? "finished" : "FAILED");
    return sending.status == Ymodem::Finish ? 0 : 1;
}
