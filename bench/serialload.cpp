// Runs the real window with its serial page shown and receives from a board in
// another process (boardsim in burst or flood mode, with the same encoding and
// seed). Prints whether every byte came, how long the user-interface thread
// was blocked at worst, and what it cost.
//
//   serialload --port COM3 --total BYTES [--hex] [--stamp] [--log-mode]
//              [--encoding utf8] [--seed 1] [--no-heartbeat] [--picture FILE]
//              [--find TEXT [--filter]]

#include "bytespool.h"
#include "heartbeat.h"
#include "loadrun.h"
#include "payload.h"
#include "processfigures.h"
#include "qtterminalwidget.h"
#include "serialportwidget.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTimer>

#include <cstdio>

namespace {

constexpr qint64 kMegabyte = 1000 * 1000;

struct Sample
{
    qint64 bytes = 0;
    double cpu = 0;
};

void check(QWidget *page, const char *name)
{
    page->findChild<QAbstractButton *>(QLatin1String(name))->setChecked(true);
}

// Whether the spool holds exactly the board's payload.
bool spoolEqualsPayload(const ByteSpool &spool, Boardsim::Encoding encoding, quint32 seed, qint64 total)
{
    if (spool.size() != total)
        return false;
    Boardsim::Payload payload(encoding, seed);
    for (qint64 offset = 0; offset < total;) {
        const QByteArray bytes = spool.read(offset, kMegabyte);
        if (bytes.isEmpty() || bytes != payload.take(bytes.size()))
            return false;
        offset += bytes.size();
    }
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    LoadRun run(argc, argv, {"port", "total", "encoding", "seed", "picture", "find"},
                {"hex", "stamp", "log-mode", "no-heartbeat", "filter"});
    const qint64 total = run.number("total");
    Boardsim::Encoding encoding = Boardsim::Encoding::Utf8;
    Boardsim::encodingFromName(run.text("encoding"), &encoding);
    const quint32 seed = run.isSet("seed") ? static_cast<quint32>(run.number("seed")) : 1;

    auto *page = run.window().findChild<SerialportWidget *>();
    auto *terminal = page->findChild<QtTerminalWidget *>();
    if (run.isSet("hex"))
        check(page, "radioRecvHex");
    if (run.isSet("stamp"))
        check(page, "checkTimeStamp");
    if (run.isSet("log-mode"))
        check(page, "checkLogMode");
    if (run.isSet("find")) {
        page->findChild<QAbstractButton *>(QStringLiteral("btnLogFind"))->click();
        page->findChild<QLineEdit *>(QStringLiteral("editLogFind"))->setText(run.text("find"));
    }
    if (run.isSet("filter"))
        check(page, "checkLogFilter");
    page->findChild<QComboBox *>(QStringLiteral("comboPort"))->setEditText(run.text("port"));

    Heartbeat heartbeat;

    QVector<Sample> samples;
    QElapsedTimer clock;
    const auto received = [page] { return page->counts().value(1).toLongLong(); };
    int quietTicks = 0;
    int idleTicks = 0;
    QTimer sampler;
    QObject::connect(&sampler, &QTimer::timeout, [&] {
        const qint64 bytes = received();
        if (bytes > 0 && !clock.isValid())
            clock.start();
        idleTicks = bytes == samples.last().bytes ? idleTicks + 1 : 0;
        if (idleTicks > 200 && terminal->queuedBytes() == 0)
            QCoreApplication::quit(); // the rest will not come
        if (bytes != samples.last().bytes)
            samples.append({bytes, ProcessFigures::cpuSeconds()});
        // The display may still be at work on a backlog when all has come.
        if (bytes >= total && terminal->queuedBytes() == 0 && ++quietTicks > 20)
            QCoreApplication::quit();
    });

    // The window is up and idle, and the first list of ports (which closes an
    // open port) is out, before the port is opened.
    QTimer::singleShot(1500, [&] {
        page->SltOpenSerialport();
        if (!run.isSet("no-heartbeat"))
            heartbeat.start();
        samples.append({0, ProcessFigures::cpuSeconds()});
        sampler.start(50);
    });
    QApplication::exec();

    // To the end of showing what had come, which a flood leaves for later.
    const double cpu = ProcessFigures::cpuSeconds() - samples.first().cpu;
    const auto cpuBetween = [&samples](qint64 from, qint64 to) {
        const auto at = [&samples](qint64 bytes) {
            for (int i = 1; i < samples.size(); ++i) {
                if (samples.at(i).bytes >= bytes) {
                    const Sample &a = samples.at(i - 1);
                    const Sample &b = samples.at(i);
                    const double share = double(bytes - a.bytes) / double(b.bytes - a.bytes);
                    return a.cpu + share * (b.cpu - a.cpu);
                }
            }
            return samples.last().cpu;
        };
        return (at(to) - at(from)) / (double(to - from) / 1000) * 1e6;
    };
    const bool equal = spoolEqualsPayload(page->spool(), encoding, seed, total);
    std::printf("received %lld of %lld, spool %s, %.1f s, worst stall %.1f ms, cpu %.3f s/MB, "
                "first MB %.0f us/KB, last MB %.0f us/KB, resident %.0f MB, anonymous %.0f MB\n",
                static_cast<long long>(received()), static_cast<long long>(total),
                equal ? "equal" : "DIFFERENT", double(clock.elapsed()) / 1000, heartbeat.worst(),
                cpu / (double(total) / kMegabyte), cpuBetween(0, kMegabyte),
                cpuBetween(total - kMegabyte, total), ProcessFigures::residentMegabytes(),
                ProcessFigures::anonymousMegabytes());
    run.savePicture();
    return equal ? 0 : 1;
}
