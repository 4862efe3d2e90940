// The example of a board, as the program that it is, on a pseudo-terminal, beside
// the host's frames and parser.

#include "pidparser.h"
#include "ptypeer.h"
#include "waitfor.h"

#include <QProcess>

#include <cmath>

namespace {

QByteArray command(int code, int channel, const QByteArray &payload = {})
{
    return PidFrame::build(static_cast<quint8>(code), static_cast<quint8>(channel), payload);
}

QByteArray setTarget(int channel, int value)
{
    return command(PidFrame::SetTarget, channel, PidFrame::int32ToBytes(value));
}

QByteArray setGains(int channel, float p, float i, float d)
{
    return command(PidFrame::SetPid, channel,
                   PidFrame::floatToBytes(p) + PidFrame::floatToBytes(i) + PidFrame::floatToBytes(d));
}

class Board
{
public:
    Board()
    {
        m_process.setStandardInputFile(line.device());
        m_process.setStandardOutputFile(line.device());
        m_process.start(QStringLiteral(EXAMPLE_PATH), QStringList());
    }
    ~Board()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    // Reports of a kind that have come so far.
    int count(int code, int channel)
    {
        collect();
        return int(std::count_if(reports.begin(), reports.end(), [=](const PidReport &report) {
            return report.command == code && report.channel == channel;
        }));
    }
    // The last one of a kind.
    PidReport last(int code, int channel)
    {
        collect();
        for (int k = reports.size() - 1; k >= 0; --k)
            if (reports.at(k).command == code && reports.at(k).channel == channel)
                return reports.at(k);
        return {};
    }
    // Complete frames without a byte between them.
    bool sentOnlyFrames() const
    {
        QByteArray frames;
        for (const PidReport &report : reports) {
            QByteArray payload;
            if (report.command == PidFrame::Pid)
                payload = setGains(1, report.gains.p, report.gains.i, report.gains.d).mid(10, 12);
            else if (report.command != PidFrame::Started && report.command != PidFrame::Stopped)
                payload = PidFrame::int32ToBytes(report.value);
            frames += command(report.command, report.channel, payload);
        }
        return m_received.startsWith(frames) && m_received.size() - frames.size() < 23;
    }

    PtyPeer line;
    QVector<PidReport> reports;

private:
    void collect()
    {
        const QByteArray bytes = line.read(1, 0);
        m_received += bytes;
        m_parser.append(bytes, 0);
        PidReport report;
        while (m_parser.next(&report) == PidParser::Outcome::Report)
            reports.append(report);
    }

    QProcess m_process;
    PidParser m_parser;
    QByteArray m_received;
};

} // namespace

class TestOrvnPidExample : public QObject
{
    Q_OBJECT

private slots:
    // For a host that is opened before it or after.
    void reportsUnasked()
    {
        Board board;
        for (int channel = 1; channel <= 5; ++channel) {
            for (const int code : {PidFrame::Target, PidFrame::Pid, PidFrame::Period})
                WAIT_FOR(board.count(code, channel) >= 3);
            WAIT_FOR(board.count(PidFrame::Actual, channel) >= 10);
            QCOMPARE(board.last(PidFrame::Pid, channel).gains.p, 0.8F);
            QCOMPARE(board.count(PidFrame::Stopped, channel),
                     1); // said once: it is every channel's on the host
        }
        QVERIFY(board.sentOnlyFrames());
    }

    void obeysBehindGarbage()
    {
        Board board;
        const QByteArray gains = setGains(2, 1.5F, 2, 3);
        QByteArray zeroLength = gains;
        zeroLength[5] = 0;
        QByteArray wrongSum = gains;
        wrongSum[22] = char(wrongSum[22] + 1);
        int target = 0;
        for (const QByteArray &garbage :
             {QByteArray("\r\nboot"), gains.left(9), gains.left(22) + gains.left(4),
              gains.left(12) + gains.mid(13), zeroLength, wrongSum, command(PidFrame::Start, 0),
              command(PidFrame::Start, 6), command(0x16, 1), QByteArray(1000, 'O'), setGains(2, NAN, 2, 3),
              setGains(2, 1, INFINITY, 3), setGains(2, 1, 2, -INFINITY)}) {
            ++target;
            QVERIFY(board.line.write(garbage + setTarget(2, target)));
            WAIT_EQUAL(board.last(PidFrame::Target, 2).value, target);
        }
        QVERIFY(board.line.write(gains + command(PidFrame::SetPeriod, 2, PidFrame::int32ToBytes(0))));
        WAIT_EQUAL(board.last(PidFrame::Pid, 2).gains.d, 3.0F);
        for (const PidReport &report : qAsConst(board.reports)) {
            if (report.command == PidFrame::Pid)
                QVERIFY(report.gains.p == 0.8F || report.gains.p == 1.5F);
            QVERIFY(report.command != PidFrame::Started);
        }
        WAIT_FOR(board.count(PidFrame::Period, 2) > 1);
        QCOMPARE(board.last(PidFrame::Period, 2).value, 10);
    }

    void controls()
    {
        Board board;
        QVERIFY(board.line.write(setGains(1, 2, 20, 0) + setTarget(1, 500) + command(PidFrame::Start, 1)));
        WAIT_FOR(board.count(PidFrame::Started, 1) == 1);
        WAIT_FOR(qAbs(board.last(PidFrame::Actual, 1).value - 500) <= 2);
        QCOMPARE(board.last(PidFrame::Actual, 2).value, 0);
        QVERIFY(board.line.write(command(PidFrame::Stop, 1)));
        WAIT_FOR(board.last(PidFrame::Actual, 1).value == 0); // the output was switched off
        QCOMPARE(board.count(PidFrame::Stopped, 1), 2);
    }

    // More commands than it can report, to a host that does not read.
    void losesNoCommandWhileItsLineIsFull()
    {
        Board board;
        QByteArray flood = command(PidFrame::Start, 3);
        for (int k = 1; k <= 5000; ++k)
            flood += setTarget(1 + k % 5, k);
        QVERIFY(board.line.write(flood + command(PidFrame::Stop, 3)));
        for (int channel = 1; channel <= 5; ++channel)
            WAIT_EQUAL(board.last(PidFrame::Target, channel).value, channel == 1 ? 5000 : 4994 + channel);
        // Whether it was started in between depends on the line; now it is not.
        WAIT_FOR(board.count(PidFrame::Stopped, 3) > board.count(PidFrame::Started, 3));
        QVERIFY(board.sentOnlyFrames());
    }
};

QTEST_GUILESS_MAIN(TestOrvnPidExample)
#include "test_orvn_pid_example.moc"
