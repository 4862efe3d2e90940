// The simulated board as other tests and benches use it: as a process at the
// far end of a pseudo-terminal. What it should send is worked out here anew.

#include "boardprocess.h"
#include "hostport.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTest>
#include <QTextCodec>

namespace {

quint32 step(quint32 x)
{
    x ^= x << 13;
    x ^= x >> 17;
    x ^= x << 5;
    return x;
}

QByteArray expectedPayload(const QString &encoding, quint32 seed, int count)
{
    QByteArray bytes;
    if (encoding == QLatin1String("binary")) {
        quint32 state = seed;
        while (bytes.size() < count) {
            state = step(state);
            bytes += char(state >> 24);
        }
        return bytes;
    }
    const char *chinese[] = {"温度", "电压", "转速", "speed"};
    const char *english[] = {"degree", "supply", "actual", "speed"};
    const char *const *words = encoding == QLatin1String("ascii") ? english : chinese;
    for (quint32 line = 0; bytes.size() < count; ++line) {
        const quint32 value = step(step(seed ^ ((line + 1) * 2654435761U)));
        const QString text = QString::asprintf("%08u %s %08x\r\n", line, words[value % 4], value);
        bytes += encoding == QLatin1String("gb18030") ? QTextCodec::codecForName("GB18030")->fromUnicode(text)
                                                      : text.toUtf8();
    }
    return bytes.left(count);
}

// Every byte value, several times over, in an order that is not regular.
QByteArray allBytes(int count)
{
    return expectedPayload(QStringLiteral("binary"), 77, count);
}

} // namespace

class TestBoardSim : public QObject
{
    Q_OBJECT

private slots:
    void payload_data()
    {
        QTest::addColumn<QStringList>("mode");
        QTest::addColumn<QString>("encoding");
        QTest::addColumn<int>("total");
        const QStringList flood{"--mode", "flood"};
        const QStringList burst{"--mode", "burst", "--bytes-per-second", "400000"};
        QTest::newRow("flood, utf8") << flood << "utf8" << 3000001;
        QTest::newRow("flood, gb18030") << flood << "gb18030" << 500000;
        QTest::newRow("flood, ascii") << flood << "ascii" << 500000;
        QTest::newRow("flood, binary") << flood << "binary" << 2000003;
        QTest::newRow("burst, utf8") << burst << "utf8" << 100001;
        QTest::newRow("burst, binary") << burst << "binary" << 100000;
        QTest::newRow("nothing") << flood << "binary" << 0;
    }

    void payload()
    {
        QFETCH(QStringList, mode);
        QFETCH(QString, encoding);
        QFETCH(int, total);
        BoardProcess board;
        QVERIFY(board.start(mode + QStringList{"--encoding", encoding, "--seed", "4711", "--delay", "0",
                                               "--total", QString::number(total)}));
        HostPort host(board.link());
        QVERIFY(host.isOpen());
        const QByteArray bytes = host.read(total);
        QCOMPARE(bytes.size(), total);
        QVERIFY(bytes == expectedPayload(encoding, 4711, total));
        QVERIFY(host.read(1, 100).isEmpty());
        QVERIFY(board.stop());
        QCOMPARE(board.statistics().value("written"), qint64(total));
        QCOMPARE(board.statistics().value("dropped"), qint64(0));
    }

    void burstsKeepTheirPause()
    {
        BoardProcess board;
        QVERIFY(board.start({"--mode", "burst", "--bytes-per-second", "100000", "--burst-pause", "40",
                             "--delay", "0", "--total", "60000"}));
        HostPort host(board.link());
        // Nothing for 20 ms is a pause between bursts.
        int bursts = 0;
        int largest = 0;
        QByteArray all = host.read(1);
        QElapsedTimer clock;
        clock.start();
        while (all.size() < 60000) {
            const QByteArray burst = host.read(60000, 20);
            if (burst.isEmpty())
                continue;
            ++bursts;
            largest = qMax(largest, burst.size());
            all += burst;
        }
        const double seconds = double(clock.elapsed()) / 1000;
        // Fourteen of 4 KB when nothing else runs; a busy machine joins some.
        QVERIFY(bursts >= 3);
        QVERIFY(largest < 60000);
        QVERIFY(seconds > 0.4); // 0.6 less the first burst
        QVERIFY(all == expectedPayload("utf8", 1, 60000));
    }

    void slowHostLosesNothing()
    {
        BoardProcess board;
        QVERIFY(
            board.start({"--mode", "flood", "--encoding", "binary", "--delay", "0", "--total", "400000"}));
        HostPort host(board.link());
        QByteArray bytes = host.read(1000);
        QTest::qWait(300); // the pseudo-terminal is full long before
        bytes += host.read(399000);
        QVERIFY(bytes == expectedPayload("binary", 1, 400000));
        QVERIFY(board.waitForEvent("finished"));
        QVERIFY(board.stop());
        QVERIFY(board.statistics().value("blocked_ms") >= 250);
    }

    void startsOnByte()
    {
        BoardProcess board;
        QVERIFY(board.start({"--mode", "flood", "--total", "100", "--start-on-byte"}));
        HostPort host(board.link());
        QVERIFY(host.read(1, 300).isEmpty());
        QVERIFY(host.write("x"));
        QCOMPARE(host.read(100), expectedPayload("utf8", 1, 100));
    }

    void echoAndRecord()
    {
        BoardProcess board;
        const QString record = board.folder() + "/record";
        QVERIFY(board.start({"--mode", "echo", "--record", record}));
        const QByteArray sent = allBytes(300000);
        HostPort host(board.link());
        QByteArray back;
        for (int at = 0; at < sent.size(); at += 3000) {
            QVERIFY(host.write(sent.mid(at, 3000)));
            back += host.read(3000);
        }
        QVERIFY(back == sent);

        // What is written at the last moment counts, too.
        QVERIFY(host.write("last words"));
        host.close();
        QVERIFY(board.waitForEvent("host left"));
        QVERIFY(board.stop());
        QFile file(record);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll() == sent + "last words");
        QCOMPARE(board.statistics().value("read"), qint64(sent.size() + 10));
    }

    void silentTakesEverything()
    {
        BoardProcess board;
        const QString record = board.folder() + "/record";
        QVERIFY(board.start({"--mode", "silent", "--record", record}));
        HostPort host(board.link());
        const QByteArray sent = allBytes(1000000);
        QVERIFY(host.write(sent));
        QVERIFY(host.read(1, 50).isEmpty());
        host.close();
        QVERIFY(board.waitForEvent("host left"));
        QFile file(record);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll() == sent);
    }

    void log_data()
    {
        QTest::addColumn<QString>("encoding");
        QTest::newRow("utf8") << "utf8";
        QTest::newRow("gb18030") << "gb18030";
    }

    void log()
    {
        QFETCH(QString, encoding);
        BoardProcess board;
        QVERIFY(board.start({"--mode", "log", "--rate", "200", "--encoding", encoding, "--delay", "0"}));
        QTextCodec *codec = QTextCodec::codecForName(encoding == "utf8" ? "UTF-8" : "GB18030");
        HostPort host(board.link());
        bool chinese = false;
        for (int line = 0; line < 60; ++line) {
            QTextCodec::ConverterState state;
            const QByteArray bytes = host.readUntil("\r\n");
            const QString text = codec->toUnicode(bytes.constData(), bytes.size(), &state);
            QCOMPARE(state.invalidChars, 0);
            QVERIFY2(text.startsWith(QString::asprintf("[%9.3f] ", line / 200.0)), qPrintable(text));
            chinese |= text.contains("电");
        }
        QVERIFY(chinese);
    }

    void logGoesOnForTheNextHost()
    {
        BoardProcess board;
        QVERIFY(board.start({"--mode", "log", "--rate", "100", "--delay", "0"}));
        for (int round = 1; round <= 3; ++round) {
            HostPort host(board.link());
            const QByteArray line = host.readUntil("\r\n");
            // Never a line begun before this host came, nor a part of one.
            QVERIFY2(line.startsWith('[') && line.count('[') == 1, line);
            host.close();
            QVERIFY(board.waitForEvent("host left", round));
        }
    }

    void shell()
    {
        BoardProcess board;
        QVERIFY(board.start({"--mode", "shell", "--encoding", "gb18030", "--seed", "9"}));
        QTextCodec *codec = QTextCodec::codecForName("GB18030");
        HostPort host(board.link());
        const auto ask = [&](const QByteArray &line) {
            host.write(line);
            return codec->toUnicode(host.readUntil("\r\n")).trimmed();
        };
        QVERIFY(ask("help\r\n").contains("flood <字节>"));
        QCOMPARE(ask("led on\n"), QStringLiteral("LED 已打开"));
        QCOMPARE(ask("led  off\r"), QStringLiteral("LED 已关闭"));
        QVERIFY(ask("adc\n").startsWith("ADC = "));
        QCOMPARE(ask("led\n"), QStringLiteral("未知命令: led"));
        QCOMPARE(ask("stall -5\n"), QStringLiteral("未知命令: stall -5"));
        QVERIFY(ask(QByteArray(100000, 'x') + "\n").size() < 300);

        QVERIFY(host.write("flood 50000\n"));
        QVERIFY(host.read(50000) == expectedPayload("gb18030", 9, 50000));

        QElapsedTimer clock;
        clock.start();
        QVERIFY(host.write("stall 300\nversion\n"));
        QVERIFY(codec->toUnicode(host.readUntil("\r\n")).startsWith("boardsim"));
        QVERIFY(clock.elapsed() >= 290);
    }

    void shellUnplugs()
    {
        BoardProcess board;
        QVERIFY(board.start({"--mode", "shell"}));
        {
            HostPort host(board.link());
            QVERIFY(host.write("unplug 200\n"));
            QVERIFY(host.waitForHangUp());
            QVERIFY(board.waitForEvent("unplugged COM3"));
            QVERIFY(!QFileInfo(board.link()).isSymLink());
        }
        QVERIFY(board.waitForEvent("plugged COM3", 2));
        HostPort host(board.link());
        QVERIFY(host.write("led on\n"));
        QCOMPARE(QString::fromUtf8(host.readUntil("\r\n")), QStringLiteral("LED 已打开\r\n"));
    }

    void unplugAndReplug()
    {
        BoardProcess board;
        QVERIFY(board.start({"--mode", "flood", "--total", "5000000", "--delay", "0", "--unplug-after", "150",
                             "--replug-after", "100"}));
        QVERIFY(QFileInfo(board.link()).isSymLink()); // the time begins with the host's arrival
        {
            HostPort host(board.link());
            host.read(1000);
            QVERIFY(host.waitForHangUp());
        }
        QVERIFY(board.waitForEvent("plugged COM3", 2));
        HostPort host(board.link());
        QVERIFY(host.isOpen());
        QVERIFY(!host.waitForHangUp(300)); // once only
    }

    void linkLifeTime()
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

        // A file of somebody else's is.
        QFile file(board.link());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!board.start({"--mode", "silent"}));
        QVERIFY(QFileInfo::exists(board.link()));
    }

    void endsWithItsParent()
    {
        BoardProcess board;
        const QString pidFile = board.folder() + "/pid";
        const QString folder = board.folder();
        QVERIFY(board.start({"--mode", "silent"}));
        const QString program = board.process().program();
        QVERIFY(board.stop());

        // A shell that starts a board, waits for its link and is gone.
        QProcess shell;
        shell.start("sh", {"-c",
                           "\"$0\" --folder \"$1\" --port COM5 --mode silent >/dev/null 2>&1 & "
                           "while ! [ -L \"$1/COM5\" ]; do sleep 0.05; done",
                           program, folder});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.exitCode(), 0);
        QTRY_VERIFY(!QFileInfo(folder + "/COM5").isSymLink());
    }

    void rejectsNonsense_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::newRow("mode") << QStringList{"--mode", "dance"};
        QTest::newRow("port") << QStringList{"--port", "../COM3"};
        QTest::newRow("encoding") << QStringList{"--encoding", "ebcdic"};
        QTest::newRow("rate") << QStringList{"--rate", "0"};
        QTest::newRow("total") << QStringList{"--total", "many"};
        QTest::newRow("argument") << QStringList{"COM3"};
        QTest::newRow("record") << QStringList{"--record", "/nowhere/at/all"};
    }

    void rejectsNonsense()
    {
        QFETCH(QStringList, options);
        BoardProcess board;
        QVERIFY(!board.start(options));
        QVERIFY(board.process().waitForFinished() || board.process().state() == QProcess::NotRunning);
        QVERIFY(board.process().exitCode() != 0);
        QVERIFY(!QFileInfo(board.link()).isSymLink());
    }
};

QTEST_GUILESS_MAIN(TestBoardSim)
#include "test_boardsim.moc"
