// The example of a board, as the program that it is, on a pseudo-terminal.

#include "pidframe.h"
#include "ptypeer.h"
#include "waitfor.h"

#include <QProcess>

#include <cmath>

using namespace PidFrame;

namespace {

QByteArray number(int code, int channel, int value)
{
    return build(quint8(code), quint8(channel), int32ToBytes(value));
}

QByteArray gains(int code, int channel, float p, float i, float d)
{
    return build(quint8(code), quint8(channel), floatToBytes(p) + floatToBytes(i) + floatToBytes(d));
}

struct Board
{
    Board()
    {
        // The shell opens the line: it must not become the terminal that controls this test.
        process.start("sh", {"-c", "exec \"$0\" <\"$1\" >\"$1\"", EXAMPLE_PATH, line.device()});
    }
    ~Board()
    {
        process.kill();
        process.waitForFinished();
    }
    // How often it has sent a frame so far, or one that begins so.
    int sent(const QByteArray &frame) { return (received += line.read(1, 0)).count(frame); }
    bool hasSentOnlyFrames() const
    {
        int at = 0;
        while (at < received.size() - 10 && received.mid(at, 4) == magic())
            at += received.at(at + 5);
        return at >= received.size() - 10;
    }

    PtyPeer line;
    QProcess process;
    QByteArray received;
};

} // namespace

class TestOrvnPidExample : public QObject
{
    Q_OBJECT

private slots:
    void reportsUnasked()
    {
        Board board;
        for (int channel = 1; channel <= 5; ++channel) {
            for (const QByteArray &frame : {number(Target, channel, 0), number(Actual, channel, 0),
                                            gains(Pid, channel, 0.8F, 1, 0), number(Period, channel, 10)})
                WAIT_FOR(board.sent(frame) >= 3);
            QCOMPARE(board.sent(build(Stopped, quint8(channel), {})), 1); // the host's button is that of all
        }
        QVERIFY(board.sent(number(Actual, 5, 0)) > 3 * board.sent(number(Period, 5, 10))); // once a second
        QVERIFY(board.hasSentOnlyFrames());
    }

    void controlsBehindGarbage()
    {
        Board board;
        const QByteArray other = gains(SetPid, 2, 1.5F, 2, 3);
        int target = 0;
        for (const QByteArray &garbage :
             {QByteArray("\r\nboot"), other.left(9), other.left(22) + other.left(4),
              other.left(12) + other.mid(13), QByteArray(other).replace(5, 1, QByteArray(1, '\0')),
              QByteArray(other).replace(22, 1, "?"), build(Start, 0, {}), build(Start, 6, {}),
              build(0x16, 1, {}), QByteArray(1000, 'O'), gains(SetPid, 2, NAN, 2, 3),
              gains(SetPid, 2, 1, INFINITY, 3), gains(SetPid, 2, 1, 2, -INFINITY)}) {
            QVERIFY(board.line.write(garbage + number(SetTarget, 2, ++target)));
            WAIT_FOR(board.sent(number(Target, 2, target)));
        }
        const QByteArray unchanged = gains(Pid, 2, 0.8F, 1, 0);
        QCOMPARE(board.sent(unchanged.left(10)), board.sent(unchanged));
        const quint8 channels[] = {1, 2};
        for (const quint8 channel : channels)
            QVERIFY(board.line.write(gains(SetPid, channel, 8, 20, 0) + number(SetTarget, channel, 500) +
                                     build(Start, channel, {})));
        for (const quint8 channel : channels) {
            const QByteArray rest = number(Actual, channel, 0);
            const QByteArray stopped = build(Stopped, channel, {});
            WAIT_FOR(board.sent(build(Started, channel, {})) == 1 &&
                     board.sent(gains(Pid, channel, 8, 20, 0)));
            WAIT_FOR(board.sent(number(Actual, channel, 500)) > 10);
            QVERIFY(board.line.write(build(Stop, channel, {})));
            WAIT_FOR(board.sent(stopped) == 2);
            WAIT_FOR(board.sent(rest) &&
                     board.received.lastIndexOf(rest) > board.received.lastIndexOf(stopped));
        }
    }

    // More commands than it can report, to a host that does not read.
    void losesNoCommandWhileItsLineIsFull()
    {
        Board board;
        QByteArray flood = build(Start, 3, {});
        for (int k = 5; k < 5000; ++k)
            flood += number(SetTarget, 1 + k % 5, k);
        QVERIFY(board.line.write(flood + build(Stop, 3, {})));
        for (int channel = 1; channel <= 5; ++channel)
            WAIT_FOR(board.sent(number(Target, channel, 4994 + channel)));
        WAIT_FOR(board.sent(build(Stopped, 3, {})) > board.sent(build(Started, 3, {})));
        QVERIFY(board.hasSentOnlyFrames());
        board.line.hangUp();
        WAIT_FOR(board.process.state() == QProcess::NotRunning);
    }
};

QTEST_GUILESS_MAIN(TestOrvnPidExample)
#include "test_orvn_pid_example.moc"
