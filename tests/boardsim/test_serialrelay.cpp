// A line of a given speed: no byte too early, none late by more than its wire
// asks for, however long it runs, and none lost.

#include "boardprocess.h"
#include "hostport.h"
#include "pacedline.h"
#include "testfiles.h"

#include <QElapsedTimer>
#include <QTest>

#include <csignal>

using Boardsim::PacedLine;

class TestSerialRelay : public QObject
{
    Q_OBJECT

private slots:
    void lineTakesItsTime()
    {
        constexpr qint64 second = 1000000000;
        PacedLine line(115200);
        QVERIFY(line.isEmpty());
        line.append("abc", 5 * second); // idle before
        QCOMPARE(line.take(5 * second + 86805), QByteArray());
        QCOMPARE(line.take(5 * second + 86806), QByteArray("a")); // 10 / 115200 s
        QCOMPARE(line.doneNs(), 5 * second + 260417);
        QCOMPARE(line.take(6 * second), QByteArray("bc"));
        QVERIFY(line.isEmpty());

        // Kept busy for a hundred seconds and looked at irregularly.
        qint64 now = 10 * second;
        qint64 arrived = 0;
        line.append(QByteArray(PacedLine::bufferBytes, 'x'), now);
        while (arrived < 1152000) {
            now += 190000 + now % 77777;
            const int count = line.take(now).size();
            arrived += count;
            QCOMPARE(line.room(), count);
            line.append(QByteArray(count, 'x'), now);
            QCOMPARE(arrived, (now - 10 * second) * 11520 / second);
        }
        QVERIFY(now < 110 * second + 300000);

        line.hold(now + second); // the other end took nothing for a second
        QCOMPARE(line.take(now + second + 86805), QByteArray());
        PacedLine immediate(0);
        immediate.append("abc", 7);
        QCOMPARE(immediate.take(7), QByteArray("abc"));
    }

    // Both ways, to a board, at a speed; what has no room waits.
    void joinsABoard()
    {
        BoardProcess board;
        QVERIFY(board.start({"--mode", "echo"}));
        QProcess relay;
        relay.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        relay.start(SERIALRELAY_PATH, {"--folder", board.folder(), "--port", "COM7", "--far-device",
                                       board.link(), "--baud", "460800"});
        QByteArray events;
        const auto happens = [&](const QByteArray &event) {
            return QTest::qWaitFor([&] { return (events += relay.readAllStandardOutput()).contains(event); },
                                   20000);
        };
        QVERIFY(happens("plugged COM7\n"));
        HostPort near(board.folder() + "/COM7");
        QVERIFY(happens("host arrived COM7\n") && board.waitForEvent("host arrived"));
        const QByteArray sent = patternBytes(23040); // half a second of the line
        QVERIFY(near.write("x") && near.read(1) == "x");
        QElapsedTimer clock;
        clock.start();
        QVERIFY(near.write(sent, 20000));
        QVERIFY(near.read(sent.size(), 20000) == sent);
        QVERIFY(clock.nsecsElapsed() >= 500000000);
        ::kill(pid_t(board.process().processId()), SIGSTOP);
        int count = 0; // until there is no room on any part of the way
        while (near.write(QByteArray(100, 'y'), 300))
            count += 100;
        ::kill(pid_t(board.process().processId()), SIGCONT);
        QVERIFY(near.read(count, 20000) == QByteArray(count, 'y'));
        relay.terminate();
        QVERIFY(relay.waitForFinished());
    }
};

QTEST_GUILESS_MAIN(TestSerialRelay)
#include "test_serialrelay.moc"
