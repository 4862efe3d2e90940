// A line of a given speed: no byte too early, none late by more than its wire
// asks for, however long it runs, and none lost.

#include "boardprocess.h"
#include "hostport.h"
#include "pacedline.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using Boardsim::PacedLine;

namespace {

class Relay
{
public:
    ~Relay()
    {
        m_process.terminate();
        m_process.waitForFinished();
    }
    bool start(const QString &folder, const QStringList &options)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(SERIALRELAY_PATH, QStringList{"--folder", folder, "--port", "COM7"} + options);
        return waitFor("plugged COM7");
    }
    // Until it has said so.
    bool waitFor(const QByteArray &line)
    {
        return QTest::qWaitFor(
            [&] {
                m_said += m_process.readAllStandardOutput();
                return m_said.contains(line + '\n');
            },
            10000);
    }

private:
    QProcess m_process;
    QByteArray m_said;
};

QByteArray pattern(int count, int factor)
{
    QByteArray bytes(count, 'x');
    for (int i = 0; i < count; ++i)
        bytes[i] = char(i * factor >> 4);
    return bytes;
}

} // namespace

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

    void bothWaysAtOnce()
    {
        QTemporaryDir folder;
        Relay relay;
        QVERIFY(relay.start(folder.path(), {"--far-port", "COM8", "--baud", "460800"}));
        HostPort near(folder.filePath("COM7"));
        HostPort far(folder.filePath("COM8"));
        QVERIFY(near.isOpen() && far.isOpen());
        QVERIFY(relay.waitFor("host arrived COM7") && relay.waitFor("host arrived COM8"));

        const QByteArray outward = pattern(23040, 7); // half a second
        const QByteArray inward = pattern(23040, 11);
        QElapsedTimer clock;
        clock.start();
        QByteArray outwardCame;
        QByteArray inwardCame;
        for (int at = 0; at < outward.size(); at += 1024) {
            QVERIFY(near.write(outward.mid(at, 1024)) && far.write(inward.mid(at, 1024)));
            outwardCame += far.read(outward.size(), 1);
            inwardCame += near.read(inward.size(), 1);
        }
        outwardCame += far.read(outward.size() - outwardCame.size());
        inwardCame += near.read(inward.size() - inwardCame.size());
        QVERIFY(clock.nsecsElapsed() >= 500000000);
        QVERIFY(outwardCame == outward);
        QVERIFY(inwardCame == inward);
    }

    void slowReaderLosesNothing()
    {
        QTemporaryDir folder;
        Relay relay;
        QVERIFY(relay.start(folder.path(), {"--far-port", "COM8", "--baud", "0"}));
        HostPort near(folder.filePath("COM7"));
        HostPort far(folder.filePath("COM8"));
        QVERIFY(relay.waitFor("host arrived COM7") && relay.waitFor("host arrived COM8"));
        // As much as goes in while nobody reads: the buffers on the way, no more.
        QByteArray sent;
        while (sent.size() < 1000000 && near.write(QByteArray(1, char(sent.size())), 200))
            sent += char(sent.size());
        QVERIFY(sent.size() < 200000);
        QVERIFY(far.read(sent.size()) == sent);
    }

    void joinsABoard()
    {
        BoardProcess board;
        QVERIFY(board.start({"--mode", "echo"}));
        Relay relay;
        QVERIFY(relay.start(board.folder(), {"--far-device", board.link(), "--baud", "921600"}));
        HostPort near(board.folder() + "/COM7");
        QVERIFY(relay.waitFor("host arrived COM7") && board.waitForEvent("host arrived"));
        const QByteArray sent = pattern(3000, 13);
        QVERIFY(near.write(sent));
        QVERIFY(near.read(sent.size()) == sent);
    }
};

QTEST_GUILESS_MAIN(TestSerialRelay)
#include "test_serialrelay.moc"
