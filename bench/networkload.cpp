// Runs the real window with its network page shown, as a server or over UDP,
// and receives from a board in another process. Prints what came, how long the
// user-interface thread was blocked at worst, and what it cost. The port that
// was opened goes to standard output first: "port 4711".
//
//   networkload [--udp] [--hex] [--stop-show] [--expect BYTES] [--peers N]
//               [--check] [--broadcast BYTES] [--auto-send MS] [--seconds S]
//
// --expect: ends when so many bytes have come, all is shown, and a second has passed.
// --check: every peer sends boardsim's ASCII payload; its bytes are compared.
// --broadcast: when all peers are there, and again at the end, sends so many bytes to all.
// --auto-send: sends 100 KB to all at this period for the seconds given.

#include "bytespool.h"
#include "heartbeat.h"
#include "loadrun.h"
#include "networktoolwidget.h"
#include "payload.h"
#include "processfigures.h"
#include "qtterminalwidget.h"
#include "tcpserver.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTimer>

#include <cstdio>

namespace {

// Compares what each peer sends with what it must send.
class PeerCheck
{
public:
    void expectUpTo(qint64 bytes)
    {
        m_expected = Boardsim::Payload(Boardsim::Encoding::Ascii, 1).take(int(bytes));
    }
    void take(const QString &name, const QByteArray &data)
    {
        int &offset = m_offsets[name];
        m_wrong += m_expected.mid(offset, data.size()) != data;
        offset += data.size();
    }
    void report() const
    {
        int complete = 0;
        for (const int offset : m_offsets)
            complete += offset == m_expected.size();
        std::printf("peers complete and in order: %d, wrong pieces: %d\n", complete, m_wrong);
    }

private:
    QByteArray m_expected;
    QHash<QString, int> m_offsets;
    int m_wrong = 0;
};

} // namespace

int main(int argc, char *argv[])
{
    LoadRun run(argc, argv, {"expect", "peers", "broadcast", "auto-send", "seconds"},
                {"udp", "hex", "stop-show", "check"});
    run.showPage(NetworkToolWidget::pageIndex);
    auto *page = run.window().findChild<NetworkToolWidget *>();
    auto *terminal = page->findChild<QtTerminalWidget *>();
    const auto *server = page->findChild<TcpServer *>();
    page->findChild<QAbstractButton *>(QStringLiteral("radioRecvHex"))->setChecked(run.isSet("hex"));
    page->findChild<QAbstractButton *>(QStringLiteral("checkStopShow"))->setChecked(run.isSet("stop-show"));
    page->findChild<QComboBox *>(QStringLiteral("comboNetType"))->setCurrentIndex(run.isSet("udp") ? 2 : 0);
    const quint16 port = LoadRun::freePort();
    page->findChild<QLineEdit *>(QStringLiteral("editPort"))->setText(QString::number(port));

    PeerCheck check;
    if (run.isSet("check")) {
        check.expectUpTo(run.number("expect") / run.number("peers"));
        QObject::connect(server, &TcpServer::signalReadMessage, page,
                         [&check](const QString &name, const QByteArray &data) { check.take(name, data); });
    }
    QObject::connect(page, &NetworkToolWidget::signalNotify, page, [](const QString &text, int kind) {
        if (kind != 0)
            std::printf("notice: %s\n", qPrintable(text));
    });

    Heartbeat heartbeat;
    const auto received = [page] { return page->counts().value(1).toLongLong(); };
    const auto broadcast = [&] {
        page->sltSendData(QByteArray(int(run.number("broadcast")), 'b'));
        std::printf("sent to all: %s bytes in all\n", qPrintable(page->counts().value(0)));
    };
    QElapsedTimer clock; // from the first byte, or from the first sending
    qint64 lastCame = 0;
    double maxResident = 0;
    double cpuBefore = 0;
    bool broadcastDone = false;
    qint64 before = 0;
    QTimer sender;
    QTimer sampler;
    QObject::connect(&sender, &QTimer::timeout, [&] { page->sltSendData(QByteArray(100000, 'a')); });
    QVector<double> residents; // once a second
    QObject::connect(&sampler, &QTimer::timeout, [&] {
        const qint64 bytes = received();
        maxResident = qMax(maxResident, ProcessFigures::residentMegabytes());
        const bool allThere = run.isSet("peers") && server->clientCount() >= run.number("peers");
        if (!clock.isValid() && (bytes > 0 || (run.isSet("auto-send") && allThere))) {
            clock.start();
            cpuBefore = ProcessFigures::cpuSeconds();
            if (run.isSet("auto-send"))
                sender.start(int(run.number("auto-send")));
        }
        if (!clock.isValid())
            return;
        if (clock.elapsed() / 1000 >= residents.size())
            residents.append(ProcessFigures::residentMegabytes());
        if (run.isSet("broadcast") && allThere && !broadcastDone) {
            broadcastDone = true;
            broadcast();
        }
        if (bytes != before || terminal->queuedBytes() > 0)
            lastCame = clock.elapsed();
        before = bytes;
        const bool complete = run.isSet("expect") && bytes >= run.number("expect");
        const bool over = run.isSet("seconds") && clock.elapsed() > run.number("seconds") * 1000;
        const qint64 quiet = clock.elapsed() - lastCame;
        if (over || (!run.isSet("seconds") && quiet > (complete ? 1000 : 3000)))
            QCoreApplication::quit();
    });

    QTimer::singleShot(1500, [&] {
        page->sltBtnOpenClicked();
        std::printf("port %d\n", int(port));
        std::fflush(stdout);
        heartbeat.start();
        sampler.start(20);
    });
    QApplication::exec();

    if (run.isSet("broadcast")) {
        broadcast();
        for (QElapsedTimer wait; !wait.isValid() || !wait.hasExpired(1000);) {
            if (!wait.isValid())
                wait.start();
            QCoreApplication::processEvents();
        }
    }
    const double seconds = double(qMax<qint64>(1, run.isSet("seconds") ? clock.elapsed() : lastCame)) / 1000;
    std::printf("received %lld, recorded %lld, sent %s, %.1f s, %.1f MB/s, worst stall %.1f ms, "
                "cpu %.1f s, resident at most %.0f MB; each second:",
                static_cast<long long>(received()), static_cast<long long>(page->spool().size()),
                qPrintable(page->counts().value(0)), seconds, double(received()) / 1e6 / seconds,
                heartbeat.worst(), ProcessFigures::cpuSeconds() - cpuBefore, maxResident);
    for (const double resident : qAsConst(residents))
        std::printf(" %.0f", resident);
    std::printf("\n");
    if (run.isSet("check"))
        check.report();
    QElapsedTimer closing;
    closing.start();
    page->sltBtnOpenClicked();
    std::printf("closing the link took %.1f ms\n", double(closing.nsecsElapsed()) * 1e-6);
    return 0;
}
