// The simulated board as other tests and benches use it: as a process at the
// far end of a pseudo-terminal. Its boot loader has a sender that others have
// written: sb of lrzsz.

#include "boardprocess.h"
#include "hostport.h"
#include "testfiles.h"
#include "ymodempackets.h"

#include <QFileInfo>
#include <QNetworkDatagram>
#include <QTcpSocket>
#include <QTest>
#include <QTextCodec>
#include <QUdpSocket>

namespace {

// Log lines are numbered from 0; the last one may be cut.
bool isNumbered(const QByteArray &bytes)
{
    const QList<QByteArray> lines = bytes.split('\n');
    for (int i = 0; i + 1 < lines.size(); ++i) {
        if (!lines.at(i).startsWith(QByteArray::number(i).rightJustified(8, '0') + ' ') ||
            !lines.at(i).endsWith('\r'))
            return false;
    }
    return lines.size() > 1;
}

} // namespace

class TestBoardSim : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        for (auto file = m_sizes.cbegin(); file != m_sizes.cend(); ++file)
            QVERIFY(writeFile(m_sent.filePath(file.key()), patternBytes(file.value())));
    }

    void sendsAllOfItsLines()
    {
        const std::tuple<const char *, const char *, int> boards[] = {
            {"flood", "utf8", 1000001}, {"burst", "gb18030", 50001}, {"flood", "ascii", 0}};
        for (const auto &[mode, encoding, total] : boards) {
            BoardProcess board;
            QVERIFY(board.start({"--mode", mode, "--encoding", encoding, "--seed", "4711", "--delay", "0",
                                 "--total", QString::number(total)}));
            HostPort host(board.link());
            const QByteArray bytes = host.read(total);
            QVERIFY(bytes.size() == total && isNumbered(bytes) == (total > 0));
            QVERIFY(host.read(1, 100).isEmpty());
            QVERIFY(board.stop());
            QCOMPARE(board.statistics().value("written"), qint64(total));
            QCOMPARE(board.statistics().value("dropped"), qint64(0));
        }
    }

    void talksOnTheNetwork()
    {
        BoardProcess board;
        const QStringList total{"--message-bytes", "100", "--total", "250", "--delay", "0"};
        QVERIFY(board.startOnNetwork("tcp-server", QStringList{"--act", "talk", "--period", "1"} + total));
        QTcpSocket host;
        host.connectToHost("127.0.0.1", board.netPort());
        QVERIFY(board.waitForEvent("finished"));
        QTRY_COMPARE(host.bytesAvailable(), 250);
        QVERIFY(isNumbered(host.readAll()) && board.stop());
        QUdpSocket receiver;
        QVERIFY(receiver.bind(QHostAddress(QHostAddress::LocalHost)));
        QVERIFY(board.startOnNetwork("udp", total.mid(0, 2) +
                                                QStringList{"--act", "flood", "--rate", "1000", "--delay",
                                                            "0", "--total", "300", "--to-port",
                                                            QString::number(receiver.localPort())}));
        QVERIFY(board.waitForEvent("finished"));
        QByteArray bytes;
        for (int i = 0; i < 3; ++i)
            bytes += receiver.receiveDatagram().data();
        QVERIFY(bytes.size() == 300 && isNumbered(bytes) && !receiver.hasPendingDatagrams());
    }

    void waitsForASlowHostThatStartsIt()
    {
        BoardProcess board;
        QVERIFY(board.start({"--mode", "flood", "--start-on-byte", "--total", "400000"}));
        HostPort host(board.link());
        QVERIFY(host.read(1, 300).isEmpty());
        QVERIFY(host.write("x"));
        QByteArray bytes = host.read(1000);
        QVERIFY(!board.waitForEvent("finished", 1, 300)); // the pseudo-terminal is full long before
        bytes += host.read(399000);
        QVERIFY(bytes.size() == 400000 && isNumbered(bytes));
        QVERIFY(board.waitForEvent("finished"));
        QVERIFY(board.stop());
        QVERIFY(board.statistics().value("blocked_ms") >= 250);
    }

    void echoesAndRecords()
    {
        BoardProcess board;
        const QString record = board.folder() + "/record";
        QVERIFY(board.start({"--mode", "echo", "--record", record}));
        const QByteArray sent = patternBytes(300000);
        HostPort host(board.link());
        QByteArray back;
        for (int at = 0; at < sent.size(); at += 3000) {
            QVERIFY(host.write(sent.mid(at, 3000)));
            back += host.read(3000);
        }
        QVERIFY(back == sent);
        QVERIFY(host.write("last words")); // also what is written at the last moment
        host.close();
        QVERIFY(board.waitForEvent("host left"));
        QVERIFY(board.stop());
        QVERIFY(contentOf(record) == sent + "last words");
        // A host that only sends is paused.
        QVERIFY(board.start({"--mode", "echo"}));
        QVERIFY(!HostPort(board.link()).write(QByteArray(3000000, 'x'), 500));
    }

    void logsForOneHostAfterTheOther()
    {
        BoardProcess board;
        QVERIFY(board.start({"--mode", "log", "--rate", "200", "--encoding", "gb18030", "--delay", "0"}));
        {
            HostPort host(board.link());
            for (int line = 0; line < 20; ++line)
                QVERIFY(host.readUntil("\r\n").startsWith(
                    QString::asprintf("[%9.3f] ", line / 200.0).toLatin1()));
        }
        QVERIFY(board.waitForEvent("host left"));
        HostPort next(board.link());
        const QByteArray line = next.readUntil("\r\n");
        QVERIFY2(line.startsWith('[') && line.count('[') == 1, line); // no part of a line
    }

    void answersCommands()
    {
        BoardProcess board;
        QVERIFY(board.start({"--mode", "shell", "--encoding", "gb18030", "--seed", "9"}));
        QTextCodec *codec = QTextCodec::codecForName("GB18030");
        HostPort host(board.link());
        const auto ask = [&](const QByteArray &line) {
            host.write(line);
            return codec->toUnicode(host.readUntil("\r\n")).trimmed();
        };
        QCOMPARE(ask("led  off\r"), QString("LED 已关闭"));
        QCOMPARE(ask("stall -5\n"), QString("未知命令: stall -5"));
        QVERIFY(ask(QByteArray(100000, 'x') + "\n").size() < 300);
        QVERIFY(host.write("flood 50000\n"));
        QVERIFY(isNumbered(host.read(50000)));
        QCOMPARE(ask("led on\n"), QString("LED 已打开")); // and nothing more of the flood
    }

    void finishesItsPicturesAndCrashesWhileALoopRuns()
    {
        BoardProcess camera;
        QVERIFY(camera.start({"--mode", "camera", "--frames", "1", "--width", "1", "--height", "1"}));
        const HostPort viewer(camera.link());
        QVERIFY(camera.waitForEvent("finished"));
        BoardProcess board;
        QVERIFY(board.start({"--mode", "pid", "--pid-fault", "reset", "--delay", "0"}));
        HostPort host(board.link());
        QVERIFY(host.write(QByteArray::fromHex("4f52564e010b0000001263"))); // starts the first
        QVERIFY(host.readUntil("boot ok\r\n").endsWith("boot ok\r\n"));
    }

    void comesOutAndGoesIn()
    {
        const QStringList boards[] = {{"--mode", "shell"},
                                      {"--mode", "echo", "--unplug-after", "150", "--replug-after", "100"}};
        for (const QStringList &options : boards) {
            BoardProcess board;
            QVERIFY(board.start(options));
            {
                HostPort host(board.link());
                QVERIFY(host.write("unplug 200\n"));
                QVERIFY(host.waitForHangUp());
                QVERIFY(board.waitForEvent("unplugged COM3"));
            }
            QVERIFY(board.waitForEvent("plugged COM3", 2));
            HostPort host(board.link());
            QVERIFY(host.write("led on\n"));
            QVERIFY(!host.readUntil("\n").isEmpty());
            QVERIFY(!host.waitForHangUp(300)); // once only
        }
    }

    void ownsItsLink()
    {
        BoardProcess board(QStringLiteral("COM12"));
        QVERIFY(board.start({"--mode", "silent"}));
        QVERIFY(QFileInfo(board.link()).symLinkTarget().startsWith("/dev/pts/"));
        QVERIFY(board.stop());
        QVERIFY(!QFileInfo(board.link()).isSymLink());

        // One left behind by a board that was killed is no obstacle.
        QVERIFY(board.start({"--mode", "silent"}));
        board.process().kill();
        QVERIFY(board.process().waitForFinished());
        QVERIFY(QFileInfo(board.link()).isSymLink());
        QVERIFY(board.start({"--mode", "silent"}));
        QVERIFY(board.stop());

        // A file of another program is.
        QFile file(board.link());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!board.start({"--mode", "silent"}));
        QVERIFY(QFileInfo::exists(board.link()));
    }

    void endsWithItsParent()
    {
        BoardProcess board;
        QVERIFY(board.start({"--mode", "silent"}));
        const QString program = board.process().program();
        QVERIFY(board.stop());
        QProcess shell; // starts a board, waits for its link and ends
        shell.start("sh", {"-c",
                           "KORVEX_VIRTUAL_PORTS=\"$1\" \"$0\" --port COM5 --mode silent >/dev/null 2>&1 & "
                           "while ! [ -L \"$1/COM5\" ]; do sleep 0.05; done",
                           program, board.folder()});
        QVERIFY(shell.waitForFinished());
        QTRY_VERIFY(!QFileInfo(board.folder() + "/COM5").isSymLink());
    }

    void rejectsNonsense()
    {
        const QStringList rejected[] = {{"--mode", "dance"},
                                        {"--port", "../COM3"},
                                        {"--encoding", "latin"},
                                        {"--rate", "0"},
                                        {"--mode", "echo", "--rate", "1"},
                                        {"--mode", "ymodem", "--fault", "nap@3"},
                                        {"--mode", "camera", "--raw-jpeg"},
                                        {"--record", "/nowhere/at/all"},
                                        {"--folder", "/proc"}};
        for (const QStringList &options : rejected) {
            BoardProcess board;
            QVERIFY2(!board.start(options), qPrintable(options.join(' ')));
            QVERIFY(board.process().waitForFinished() || board.process().state() == QProcess::NotRunning);
            QVERIFY(board.process().exitCode() != 0 && !board.errors().isEmpty());
            QVERIFY(!QFileInfo(board.link()).isSymLink());
        }
    }

    void receivesFiles()
    {
        const std::tuple<QStringList, QStringList, QString> transfers[] = {
            {{}, {}, "batch end 6 files"},
            {{"-k", "-f"}, // names with their folders
             {"--nak-first-eot", "--fault", "nak@0", "--fault", "nak@every3"},
             "refused on purpose"},
            {{"-k"},
             {"--packet-timeout", "200", "--ask-interval", "200", "--fault", "lose@0", "--fault",
              "lose@every30*2"},
             "repeated block"}};
        for (const auto &[senderOptions, boardOptions, event] : transfers) {
            BoardProcess board;
            QVERIFY(board.start(bootLoader(board) + boardOptions));
            QCOMPARE(send(board, senderOptions, m_sizes.keys()), 0);
            QVERIFY2(board.waitForEvent("batch end 6 files"), qPrintable(board.events().join('\n')));
            QVERIFY(board.waitForEvent(event) && board.stop());
            for (auto file = m_sizes.cbegin(); file != m_sizes.cend(); ++file)
                QVERIFY2(contentOf(received(board) + file.key()) == patternBytes(file.value()),
                         qPrintable(file.key()));
        }
    }

    void receivesTheNextBatchAfterCancelling()
    {
        BoardProcess board;
        QVERIFY(board.start(bootLoader(board) + QStringList{"--fault", "can@5"}));
        QVERIFY(send(board, {"-k"}, {"large.bin"}) != 0);
        QVERIFY(board.waitForEvent("cancelled: on purpose"));
        QVERIFY(board.waitForEvent("host left"));
        QVERIFY(!QFile::exists(received(board) + "large.bin")); // a half is of no use
        QCOMPARE(send(board, {"-k"}, {"large.bin"}), 0);
        QVERIFY(board.waitForEvent("file large.bin 102400 bytes"));
    }

    void staysSilent()
    {
        BoardProcess board;
        QVERIFY(
            board.start(bootLoader(board) + QStringList{"--ask-interval", "100", "--fault", "silence@0"}));
        HostPort host(board.link());
        QCOMPARE(host.read(1), QByteArray("C"));
        QVERIFY(host.write(packet(0, QByteArray("a.bin\0001", 7), 128)));
        QVERIFY(board.waitForEvent("silent"));
        QVERIFY(host.read(50, 1000).size() < 50); // and no more
    }

private:
    static QString received(const BoardProcess &board) { return board.folder() + "/received/"; }
    static QStringList bootLoader(const BoardProcess &board)
    {
        return {"--mode", "ymodem", "--delay", "0", "--receive-folder", received(board)};
    }

    // The exit code of the sender, which has its standard input and output on
    // the port; -1 if it does not end.
    int send(const BoardProcess &board, const QStringList &options, const QStringList &names)
    {
        QProcess sender;
        sender.setWorkingDirectory(m_sent.path());
        sender.setStandardInputFile(board.link());
        sender.setStandardOutputFile(board.link(), QIODevice::Append); // a device is not cut
        QStringList files;
        for (const QString &name : names)
            files += options.contains("-f") ? m_sent.filePath(name) : name;
        sender.start("sb", QStringList{"-q"} + options + files);
        return sender.waitForFinished(60000) && sender.exitStatus() == QProcess::NormalExit
                   ? sender.exitCode()
                   : -1;
    }

    QTemporaryDir m_sent;
    const QMap<QString, int> m_sizes{
        {"nothing", 0},        {"one", 1}, {"128.bin", 128}, {"129 b.bin", 129}, {"固件 升级.bin", 300},
        {"large.bin", 102400},
    };
};

QTEST_GUILESS_MAIN(TestBoardSim)
#include "test_boardsim.moc"
