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
        near.close();
        QVERIFY(happens("host left COM7\n"));
        QVERIFY(board.stop()); // the device hangs up
        QVERIFY(relay.waitForFinished() && relay.exitStatus() == QProcess::NormalExit &&
                relay.exitCode() == 0);
        QCOMPARE(events, QByteArray("plugged COM7\nhost arrived COM7\nhost left COM7\n"));
    }

    void joinsTwoPorts()
    {
        const QTemporaryDir folder;
        QProcess relay;
        relay.start(SERIALRELAY_PATH,
                    {"--folder", folder.path(), "--port", "COM1", "--far-port", "COM2", "--baud", "0"});
        QByteArray events;
        QVERIFY(QTest::qWaitFor(
            [&] { return (events += relay.readAllStandardOutput()) == "plugged COM2\nplugged COM1\n"; },
            20000));
        HostPort near(folder.filePath("COM1"));
        HostPort far(folder.filePath("COM2"));
        QTRY_COMPARE((events += relay.readAllStandardOutput()).count("host arrived"), 2);
        const QByteArray sent = patternBytes(20000); // more than the buffers hold
        QVERIFY(near.write(sent) && far.read(sent.size()) == sent);
        QVERIFY(far.write(sent) && near.read(sent.size()) == sent);
        relay.terminate();
        QVERIFY(relay.waitForFinished() && relay.exitCode() == 0);
        QVERIFY(!QFileInfo(folder.filePath("COM2")).isSymLink());
    }

    void rejectsNonsense()
    {
        const QString usage("takes --folder, --port, --baud and either --far-port or --far-device");
        const QPair<QString, QString> rejected[] = {
            {"--folder @ --port A --far-port B", usage},
            {"--folder @ --port A --far-port B --baud -1", usage},
            {"--folder @ --port A --baud 1", usage},
            {"--folder @ --port A --far-port B --far-device C --baud 1", usage},
            {"--folder @ --port A --far-device /nowhere --baud 1",
             "cannot open /nowhere: No such file or directory"},
            {"--folder /proc --port A --far-port B --baud 1",
             "cannot make the link: No such file or directory"}};
        const QTemporaryDir folder;
        for (const auto &[options, error] : rejected) {
            QProcess relay;
            relay.setProcessChannelMode(QProcess::MergedChannels);
            relay.start(SERIALRELAY_PATH, QString(options).replace('@', folder.path()).split(' '));
            QVERIFY2(relay.waitForFinished() && relay.exitCode() == 1, qPrintable(options));
            QCOMPARE(QString(relay.readAll()), "serialrelay: " + error + '\n');
        }
    }
};

QTEST_GUILESS_MAIN(TestSerialRelay)
#include "test_serialrelay.moc"
