// The simulated board as other tests and benches use it: as a process at the
// far end of a pseudo-terminal. Its boot loader has a sender that others have
// written: sb of lrzsz.

#include "boardprocess.h"
#include "hostport.h"
#include "testfiles.h"
#include "virtualport.h"
#include "ymodempackets.h"

#include <QNetworkDatagram>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUdpSocket>
#include <QtTest>

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

QByteArray sumOf(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex();
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
        const std::tuple<QString, QString, int, QByteArray> boards[] = {
            {"flood", "utf8", 1000001, "d4b1b08b145621f0af4118dc4e0ac7ff"},
            {"burst", "ascii", 50001, "43a02c43daac400d6fea5d60706e747d"},
            {"flood", "binary", 300, "ac2878bd7e0748315606b7d954a73e04"},
            {"flood", "ascii", 0, "d41d8cd98f00b204e9800998ecf8427e"}};
        for (const auto &[mode, encoding, total, sum] : boards) {
            BoardProcess board;
            QStringList options{"--mode", mode,      "--encoding", encoding,  "--seed",
                                "4711",   "--delay", "0",          "--total", QString::number(total)};
            if (mode == "burst")
                options += {"--rest", "30"};
            QVERIFY(board.start(options));
            for (const int hosts : {1, 2}) { // each gets all of them
                HostPort host(board.link());
                const QByteArray bytes = host.read(total);
                QVERIFY(bytes.size() == total && isNumbered(bytes) == (total > 0 && encoding != "binary"));
                QCOMPARE(sumOf(bytes), sum);
                QVERIFY(host.read(1, 100).isEmpty());
                host.close();
                QVERIFY(board.waitForEvent("host left", hosts));
            }
            QVERIFY(board.stop());
            QCOMPARE(board.statistics().value("written"), qint64(2 * total));
            QCOMPARE(board.statistics().value("dropped"), qint64(0));
        }
    }

    void floodsDatagrams()
    {
        QUdpSocket receiver;
        QVERIFY(receiver.bind(QHostAddress(QHostAddress::LocalHost)));
        BoardProcess board;
        const QString options("--act flood --rate 1000 --delay 0 --message-bytes 100 --total 300 --to-port ");
        QVERIFY(board.startOnNetwork("udp", (options + QString::number(receiver.localPort())).split(' ')));
        QVERIFY(board.waitForEvent("finished"));
        QByteArray bytes;
        for (int i = 0; i < 3; ++i)
            bytes += receiver.receiveDatagram().data();
        QVERIFY(bytes.size() == 300 && isNumbered(bytes) && !receiver.hasPendingDatagrams());
    }

    // What it does with a host that has sent five bytes: the sum of its answer.
    void actsOnTheNetwork()
    {
        const QPair<QString, QByteArray> acts[] = {
            {"echo", sumOf("hello")},
            {"flood --encoding binary --total 1500000", "1c1db525fb1f4ab3c230bea7365181b9"}, // over again
            {"flood --duration 0 --total 1000", sumOf({})},
            {"drip --encoding binary --period 1 --total 20",
             sumOf(QByteArray::fromHex("00049d128e2c251977ad9e59b40405c935c613ff"))},
            {"half-close --encoding binary --total 300", "3314ebb8de9f87d4ff7e95e07eb6b32d"},
            {"talk --message-bytes 100 --period 1 --total 250", "4c70803317c8d405c9af79bb7e5822de"},
            {"vanish", sumOf({})}};
        for (const auto &[text, sum] : acts) {
            BoardProcess board;
            const QString record = board.folder() + "/record";
            QVERIFY(board.startOnNetwork(
                "tcp-server", QStringList{"--record", record, "--delay", "0", "--act"} + text.split(' ')));
            QTcpSocket host;
            host.connectToHost("127.0.0.1", board.netPort());
            host.write("hello");
            QVERIFY(board.waitForEvent("connected 1"));
            if (text.contains("total"))
                QVERIFY(board.waitForEvent("finished"));
            const bool ends = text.startsWith("half") || text == "vanish";
            QTRY_COMPARE(host.state() == QAbstractSocket::UnconnectedState, ends);
            QByteArray bytes;
            QTRY_COMPARE(sumOf(bytes += host.readAll()), sum);
            if (text != "vanish")
                QTRY_COMPARE(contentOf(record), QByteArray("hello"));
            host.abort();
            QVERIFY(board.waitForEvent("disconnected 0") && board.stop());
            QCOMPARE(board.statistics().value("written"), qint64(bytes.size()));
        }
    }

    // Again, unless it ended the connection itself.
    void connectsToAServer()
    {
        for (const char *act : {"echo", "camera", "half-close", "reset", "vanish"}) {
            QTcpServer server;
            QVERIFY(server.listen(QHostAddress::LocalHost));
            BoardProcess board;
            QVERIFY(board.startOnNetwork("tcp-client", {"--net-port", QString::number(server.serverPort()),
                                                        "--act", act, "--peers", "2", "--period", "10",
                                                        "--delay", "0", "--total", "10", "--fps", "50"}));
            const bool again = QByteArray(act) == "echo" || QByteArray(act) == "camera";
            QList<QTcpSocket *> hosts;
            for (int i = 0; i < (again ? 6 : 2); ++i) {
                QTRY_VERIFY(server.hasPendingConnections());
                hosts += server.nextPendingConnection();
                if (QByteArray(act) == "echo") {
                    QVERIFY(hosts.last()->write("hello") == 5);
                    QTRY_COMPARE(hosts.last()->bytesAvailable(), 5);
                }
                if (QByteArray(act) == "camera")
                    QTRY_VERIFY(hosts.last()->bytesAvailable() > 2000);
                if (again)
                    hosts.last()->abort();
            }
            if (QByteArray(act) == "half-close")
                for (QTcpSocket *host : hosts) {
                    QTRY_COMPARE(host->bytesAvailable(), 10);
                    host->close();
                }
            QVERIFY(again || board.waitForEvent("disconnected 0"));
            QVERIFY(again || !server.waitForNewConnection(200));
            QVERIFY(board.stop());
            QVERIFY(board.statistics().value("peers") >= hosts.size());
            QVERIFY(again || board.statistics().value("peers") == 2);
        }
    }

    void logsOnTheNetwork()
    {
        BoardProcess board;
        QVERIFY(board.startOnNetwork("tcp-server", {"--act", "log", "--rate", "1000", "--delay", "0",
                                                    "--encoding", "gb18030", "--seed", "5"}));
        QTcpSocket host;
        host.connectToHost("127.0.0.1", board.netPort());
        QTRY_VERIFY(host.bytesAvailable() > 3000);
        QByteArray lines; // without their times
        for (int i = 0; i < 30; ++i) {
            const QByteArray line = host.readLine();
            QVERIFY(line.startsWith("[    0.") && line.mid(10, 2) == "] ");
            lines += line.mid(12);
        }
        QCOMPARE(sumOf(lines), QByteArray("e013aee5dbd2e40e548cc81ae6eb0d76"));
    }

    void echoesDatagrams()
    {
        BoardProcess board;
        const QString record = board.folder() + "/record";
        QVERIFY(board.startOnNetwork("udp", {"--record", record}));
        QUdpSocket host;
        QVERIFY(host.bind(QHostAddress(QHostAddress::LocalHost)));
        for (const QByteArray bytes : {"one", "three"}) {
            host.writeDatagram(bytes, QHostAddress::LocalHost, board.netPort());
            QTRY_VERIFY(host.hasPendingDatagrams());
            QCOMPARE(host.receiveDatagram().data(), bytes);
        }
        QVERIFY(board.stop());
        QCOMPARE(board.statistics(), (QHash<QString, qint64>{{"written", 8}, {"read", 8}, {"datagrams", 2}}));
        QCOMPARE(contentOf(record), QByteArray("onethree"));
    }

    void countsBytes()
    {
        const QTemporaryDir folder;
        Boardsim::VirtualPort port(folder.path(), "COM3");
        const QSignalSpy empty(&port, &Boardsim::VirtualPort::outputEmpty);
        QString error;
        QVERIFY(port.plug(&error) && port.plug(&error));
        port.write("nobody");
        HostPort host(folder.filePath("COM3"));
        int atOnce = 0;
        connect(&port, &Boardsim::VirtualPort::hostArrived, this, [&] {
            port.write("x");
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5); // its watch does not run within itself
            atOnce = empty.count();
        });
        QTRY_COMPARE(atOnce, 1);
        port.setStalled(true);
        port.write("late");
        QVERIFY(host.write("hello") && !QTest::qWaitFor([&] { return port.queued() != 4; }, 100));
        QVERIFY(port.statistics().read == 0 && port.statistics().blockedMs >= 90);
        port.setStalled(false);
        QTRY_VERIFY(empty.count() == 2 && port.statistics().read == 5);
        port.setReading(false);
        port.write(QByteArray(200000, 'x')); // more than there is room for
        QByteArray last;
        connect(&port, &Boardsim::VirtualPort::received, this,
                [&](const QByteArray &bytes) { last += bytes; });
        QVERIFY(host.write("last"));
        host.close();
        QTRY_VERIFY(!port.hasHost());
        QCOMPARE(last, QByteArray("last"));
        const auto [written, read, dropped, blockedMs] = port.statistics();
        QVERIFY(written + dropped == 200011 && dropped > 6 && port.queued() == 0 && blockedMs >= 90);
        HostPort next(folder.filePath("COM3"));
        QVERIFY(next.write("again"));
        QTRY_COMPARE(port.statistics().read, 14); // not paused any more
        port.unplug();
        QVERIFY(!port.hasHost() && next.waitForHangUp());
    }

    void waitsForASlowHostThatStartsIt()
    {
        BoardProcess board;
        QVERIFY(board.start({"--mode", "flood", "--start-on-byte", "--total", "400000"}));
        HostPort host(board.link());
        QVERIFY(host.read(1, 300).isEmpty());
        QVERIFY(host.write("x"));
        QByteArray bytes = host.read(1000);
        QVERIFY(host.write("y"));                         // it runs already
        QVERIFY(!board.waitForEvent("finished", 1, 300)); // the pseudo-terminal is full long before
        bytes += host.read(399000);
        QVERIFY(bytes.size() == 400000 && isNumbered(bytes));
        QVERIFY(board.waitForEvent("finished"));
        host.close();
        QVERIFY(board.waitForEvent("host left"));
        HostPort next(board.link());
        QVERIFY(next.read(1, 100).isEmpty() && next.write("x") && isNumbered(next.read(1000)));
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
            QCryptographicHash all(QCryptographicHash::Md5); // of lines of every kind
            for (int line = 0; line < 60; ++line)
                all.addData(host.readUntil("\r\n"));
            QCOMPARE(all.result().toHex(), QByteArray("644b8ff032b706e8c7ac76faf535a817"));
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
        QVERIFY(host.write(
            "led  off\rstall -5\nstall 600001\nunplug 1 2\n\n\rversion\nadc\nstall 0\nadc\nhelp\n"));
        QCOMPARE(
            codec->toUnicode(host.readUntil("<\xba\xc1\xc3\xeb>\r\n")),
            QString("LED 已关闭\r\n未知命令: stall -5\r\n未知命令: stall 600001\r\n未知命令: unplug 1 2\r\n"
                    "boardsim 1.0, 模拟开发板\r\nADC = 831, 电压 0.670 V\r\nADC = 2055, 电压 1.656 V\r\n"
                    "命令: help, version, led on|off, adc, stall <毫秒>, flood <字节>, unplug <毫秒>\r\n"));
        QVERIFY(host.write(QByteArray(100000, 'x') + "\n"));
        QCOMPARE(codec->toUnicode(host.readUntil("\r\n")), QString("未知命令: %1\r\n").arg("x", 256, 'x'));
        for (const char *flood : {"flood 2000\n", "flood 50000\n"}) // from the start again
            QVERIFY(host.write(flood) && isNumbered(host.read(QByteArray(flood).mid(6).toInt())));
        QVERIFY(host.write("led on\n") &&
                host.readUntil("\r\n").startsWith("LED")); // and no more of the flood
    }

    // The sums are those of sessions put together from the description of the link.
    void sendsItsPictures()
    {
        const QTemporaryDir folder;
        QVERIFY(writeFile(folder.filePath("a.jpg"), "\xff\xd8"
                                                    "first\xff\xd9"));
        QVERIFY(writeFile(folder.filePath("b.jpeg"), "\xff\xd8second\xff\xd9"));
        QVERIFY(writeFile(folder.filePath("c.txt"), "none"));
        const std::tuple<QString, int, int, QByteArray> sessions[] = {
            {"--width 17 --height 9 --format 5 --devices 2 --camera-fault crc", 11, 5215,
             "3b6d08b6fbb3382cba3986f9ab7e167b"},
            {"--width 16 --height 8 --camera-fault truncate --big-endian --test-pattern --chunk 100", 6, 1536,
             "fd7f5e9e76093f6c172d2ad3302f50b8"},
            {"--width 17 --height 9 --camera-fault garbage", 10, 3237, "a16864b1228937766c79e75ad94aa57b"},
            {"--width 30 --height 9 --format 2 --devices 2", 40, 22114, "91f7963011037ed618ddaf1f3ce75ce4"},
            {"--width 2 --height 1 --format 5", 1, 35, "3471d1199671c19745ecd6e485555988"},
            {"--format 1 --picture-folder @", 7, 167, "54565b6edfa67fefe6fb33c9c53c13c4"},
            {"--raw-jpeg --picture-folder @", 5, 47, "ae2f3cb9561a5931fb49f6c85d9a449b"}};
        for (auto [text, frames, size, sum] : sessions) {
            const QStringList options = text.replace("@", folder.path()).split(' ') +
                                        QStringList{"--fps", "0", "--delay", "0", "--frames"} +
                                        QStringList(QString::number(frames));
            BoardProcess board;
            QVERIFY(board.start(QStringList{"--mode", "camera"} + options));
            HostPort host(board.link());
            QCOMPARE(sumOf(host.read(size)), sum);
            QVERIFY(board.waitForEvent("finished") && board.stop());
            QVERIFY(board.statistics().value("frames") == frames &&
                    board.statistics().value("written") == size);

            QVERIFY(board.startOnNetwork("tcp-server", QStringList{"--act", "camera"} + options));
            QTcpSocket socket;
            socket.connectToHost("127.0.0.1", board.netPort());
            QVERIFY(board.waitForEvent("finished"));
            QTRY_COMPARE(socket.bytesAvailable(), size);
            QCOMPARE(sumOf(socket.readAll()), sum);
            QVERIFY(board.stop());

            QUdpSocket receiver;
            QVERIFY(receiver.bind(QHostAddress(QHostAddress::LocalHost)));
            QVERIFY(board.startOnNetwork(
                "udp", QStringList{"--act", "camera", "--to-port", QString::number(receiver.localPort())} +
                           options));
            QVERIFY(board.waitForEvent("finished"));
            QByteArray bytes;
            while (receiver.hasPendingDatagrams())
                bytes += receiver.receiveDatagram().data();
            QCOMPARE(sumOf(bytes), sum);
        }
    }

    // Whatever is wrong, no frame of five loops is lost while one runs; but a crash ends in half of one.
    void controlsWithAFault()
    {
        const QByteArray start = QByteArray::fromHex("4f52564e010b0000001263");
        for (const QString fault : {"none", "garbage", "glued", "cut", "flood", "reset", "silence"}) {
            BoardProcess board;
            QVERIFY(board.start(
                {"--mode", "pid", "--pid-fault", fault, "--delay", "0", "--report-rate", "5000"}));
            HostPort host(board.link());
            QVERIFY(host.read(265).size() == 265 && host.write(start)); // stands still, but greets
            if (fault == "reset") {
                const QByteArray end("ORVN\x01\x0f\0\0\r\nboot ok\r\n", 19);
                QVERIFY(host.readUntil(end).endsWith(end));
                QCOMPARE(host.read(400, 500).size(), 320); // all stand still
                continue;
            }
            if (fault == "silence") { // for a second, after two
                const int before = host.read(1000000, 300).size();
                QVERIFY(before > 0 && before < 1000000 && !host.read(1, 20000).isEmpty());
                continue;
            }
            QByteArray bytes = host.read(fault == "flood" ? 8000000 : 30000);
            QVERIFY(host.write(QByteArray(start).replace(9, 2, "\x13\x64")));
            bytes += host.readUntil(QByteArray::fromHex("4f52564e010b0000000556")); // stopped
            const int frames = bytes.count(QByteArray("ORVN\x01\x0f\0\0\0\x02", 10));
            if (fault == "cut" || fault == "glued") { // the next host begins between frames
                QVERIFY(host.write(start) && host.read(1000).size() == 1000);
                host.close();
                QVERIFY(board.waitForEvent("host left"));
                QCOMPARE(HostPort(board.link()).read(10), QByteArray("ORVN\x01\x0f\0\0\0\x01", 10));
                continue;
            }
            QVERIFY(board.stop() && board.statistics().value("reports") == frames);
            QCOMPARE(bytes.size() == frames * 15 + 22, fault != "garbage");
        }
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
            QVERIFY(!host.waitForHangUp(300) && board.waitForEvent("host arrived", 2)); // once only
            QString happened;
            for (const QString &event : board.events())
                happened += event.section(' ', 0, 1) + '|';
            QCOMPARE(happened,
                     "plugged COM3|host arrived|host left|unplugged COM3|plugged COM3|host arrived|");
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
        // Options, the exit code, and what it says.
        const std::tuple<QString, int, QString> rejected[] = {
            {"--mode dance", 2, "there is no mode 'dance'"},
            {"--mode=shell more", 2, "unexpected argument 'more'"},
            {"--port ../COM3", 2, "--port does not take '../COM3'"},
            {"--encoding latin", 2, "--encoding does not take 'latin'"},
            {"--mode echo --rate 1", 1, "Unknown option 'rate'."},
            {"--mode ymodem --fault nap@3", 2, "--fault does not take 'nap@3'"},
            {"--mode ymodem --fault nak@every0", 2, "--fault does not take 'nak@every0'"},
            {"--mode camera --raw-jpeg", 2, "--raw-jpeg needs a --picture-folder"},
            {"--record /nowhere/at/all", 1, "cannot write /nowhere/at/all: No such file or directory"},
            {"--folder /proc", 1, "cannot make the link: No such file or directory"},
            {"--folder=", 2, "name a folder with --folder or in KORVEX_VIRTUAL_PORTS"},
            {"--mode tcp-server --address 192.0.2.1", 1, "cannot listen: The address is not available"},
            {"--mode tcp-client --record /nowhere/at/all", 1, "cannot write /nowhere/at/all"},
            {"--mode udp --address 192.0.2.1", 1, "cannot bind: The address is not available"}};
        for (const auto &[text, code, error] : rejected) {
            BoardProcess board;
            const QStringList options = text.split(' ');
            const bool onNetwork = text.contains("-mode tcp-") || text.contains("-mode udp");
            QVERIFY2(
                !(onNetwork ? board.startOnNetwork(options.at(1), options.mid(2)) : board.start(options)) ||
                    text.contains("client"), // is not waited for
                qPrintable(text));
            QVERIFY(board.process().waitForFinished() || board.process().state() == QProcess::NotRunning);
            QCOMPARE(board.errors(), "boardsim: " + error + '\n');
            QCOMPARE(board.process().exitCode(), code);
            QVERIFY(!QFileInfo(board.link()).isSymLink());
        }
    }

    void namesItsLimits()
    {
        // The numbers of a mode: name, lowest, highest, default.
        const QPair<const char *, QString> modes[] = {
            {"log", "delay 0 2147483647 200,unplug-after -1 2147483647 -1,replug-after -1 2147483647 -1,"
                    "seed 0 4294967295 1,rate 1 100000 20"},
            {"burst", "total -1 9223372036854775807 -1,bytes-per-second 1 100000000 92000,"
                      "burst-pause 1 60000 12,rest 0 400 0"},
            {"pid", "report-rate 1 100000 100,noise 0 1000 2,seed 0 4294967295 1"},
            {"ymodem", "ask-interval 1 600000 1000,packet-timeout 1 600000 10000"},
            {"camera",
             "format 0 255 4,width 1 65535 320,height 1 65535 240,first-device 0 255 0,devices 1 2 1,"
             "fps 0 1000 10,chunk 0 1048576 0,address-length 1 4 2,value-length 1 4 1,"
             "frames -1 2147483647 -1"},
            {"tcp-server", "net-port 0 65535 0,peers 1 10000 1,delay 0 3600000 200,rate 1 100000 20,"
                           "message-bytes 0 65507 100,period 1 60000 100,duration -1 3600000 -1"},
            {"udp", "net-port 0 65535 0,to-port 0 65535 0,rate 1 100000 20,message-bytes 0 65507 100,"
                    "delay 0 3600000 200"}};
        BoardProcess board;
        QVERIFY(board.start({"--mode", "silent"}));
        const auto said = [&board](const QStringList &options) {
            QProcess process;
            process.setProcessChannelMode(QProcess::MergedChannels);
            process.start(board.process().program(), options);
            process.waitForFinished();
            return QString(process.readAll()).simplified();
        };
        for (const auto &[mode, numbers] : modes) {
            const QString help = said({"--mode", mode, "--help"});
            QVERIFY(help.contains(" tcp-server Listens on the network. ") &&
                    help.contains(QString(" those of mode '%1';").arg(mode)));
            for (const QString &number : numbers.split(',')) {
                const QString name = "--" + number.section(' ', 0, 0);
                QCOMPARE(said({"--mode", mode, name, "x"}),
                         QString("boardsim: %1 takes a number from %2 to %3")
                             .arg(name, number.section(' ', 1, 1), number.section(' ', 2, 2)));
                QVERIFY2(help.section(name + " <", 1)
                             .section(" --", 0, 0)
                             .contains(QString("(default: %1)").arg(number.section(' ', 3))),
                         qPrintable(name));
            }
        }
    }

    void receivesFiles()
    {
        const std::tuple<QStringList, QStringList, QString> transfers[] = {
            {{}, {}, "batch end 6 files"},
            {{"-k", "-f"}, // names with their folders
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
        QVERIFY(board.waitForEvent("file large.bin 102400 bytes") &&
                QFileInfo(received(board) + "large.bin").size() == 102400);
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
        QStringList files;
        for (const QString &name : names)
            files += options.contains("-f") ? m_sent.filePath(name) : name;
        // The shell opens the port: it would become the terminal of a test that leads a
        // session, which then ends with the board.
        sender.start("sh", QStringList{"-c", "port=$1; shift; exec sb -q \"$@\" <\"$port\" >>\"$port\"", "sh",
                                       board.link()} +
                               options + files);
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
