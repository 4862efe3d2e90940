// Frames to the board and reports from it, with their bytes written out; then what
// the recorder keeps of both, and what the session sends without being asked. Times are the test's.

#include "pidexport.h"
#include "pidparser.h"
#include "pidsession.h"

#include <QtTest>

namespace {

using Outcome = PidParser::Outcome;

// A frame with a wrong sum, which is ignored.
QByteArray frame(int channel, int length, int command, const QByteArray &payloadHex = {})
{
    QByteArray bytes("ORVN");
    bytes += static_cast<char>(channel);
    for (int shift : {0, 8, 16, 24})
        bytes += static_cast<char>(length >> shift);
    bytes += static_cast<char>(command);
    return bytes + QByteArray::fromHex(payloadHex) + '\x55';
}

// What a run gives: "channel:command:value" for each report, and how it ended.
QStringList run(PidParser &parser, const QByteArray &bytes = {})
{
    parser.append(bytes, 0);
    QStringList found;
    PidReport report;
    for (;;) {
        const Outcome outcome = parser.next(&report);
        if (outcome != Outcome::Report)
            return found << (outcome == Outcome::Dropped ? "dropped" : "waiting");
        found << QString("%1:%2:%3").arg(report.channel).arg(report.command).arg(report.value);
    }
}

QByteArray report(int channel, PidFrame::Report code, const QByteArray &payload = {})
{
    return PidFrame::build(code, static_cast<quint8>(channel), payload);
}

QByteArray actual(int channel, qint32 value)
{
    return report(channel, PidFrame::Actual, PidFrame::int32ToBytes(value));
}

} // namespace

class TestPidSession : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_recorder = std::make_unique<PidRecorder>();
        m_session = std::make_unique<PidSession>(m_recorder.get());
        m_sent.clear();
        connect(m_session.get(), &PidSession::command, this, [this](int command, int channel) {
            m_sent << QString("%1:%2").arg(command, 0, 16).arg(channel);
        });
    }

    void cleanup() { m_session.reset(); }

    void convertsNumbers()
    {
        QCOMPARE(PidFrame::bytesToInt32(QByteArray::fromHex("00000080")), INT_MIN);
        QCOMPARE(PidFrame::bytesToFloat(QByteArray::fromHex("0000c03f")), 1.5F);
        for (int size : {3, 5}) {
            QCOMPARE(PidFrame::bytesToInt32(QByteArray(size, '\x7f')), 0);
            QCOMPARE(PidFrame::bytesToFloat(QByteArray(size, '\x3f')), 0.0F);
        }
    }

    void parsesAnyCut()
    {
        const QByteArray bytes = actual(3, 42) + frame(1, 11, 4) + frame(5, 15, 6, "ffffffff");
        const QStringList all{"3:2:42", "1:4:0", "5:6:-1", "waiting"};
        for (int cut = 0; cut <= bytes.size(); ++cut) {
            PidParser parser;
            QStringList found = run(parser, bytes.left(cut));
            found.removeLast();
            QCOMPARE(found + run(parser, bytes.mid(cut)), all);
            QCOMPARE(parser.size(), 0);
        }
    }

    void skipsGarbage()
    {
        for (const QByteArray &garbage :
             {QByteArray("x"), QByteArray("OO"), QByteArray("ORVO"), QByteArray("OROROR"),
              QByteArray("\r\nboot ok\r\n"), QByteArray(100000, 'O')}) {
            PidParser parser;
            QCOMPARE(run(parser, garbage), QStringList("waiting"));
            QCOMPARE(parser.size(), qMin(3, garbage.size())); // may be the beginning of a frame
            QCOMPARE(run(parser, actual(1, 7) + garbage + actual(2, 8)),
                     (QStringList{"1:2:7", "2:2:8", "waiting"}));
        }
    }

    void dropsAndEndsTheRun()
    {
        const auto dropped = [](const QByteArray &bad, int length) {
            PidParser parser;
            const QStringList first = run(parser, actual(1, 1) + bad + actual(2, 2));
            return first == QStringList{"1:2:1", "dropped"} && parser.size() == bad.size() - length + 15 &&
                   run(parser) == QStringList{"2:2:2", "waiting"}; // with the next arrival
        };
        for (int channel : {0, 6, 255})
            QVERIFY(dropped(frame(channel, 15, 2, "01000000"), 15));
        for (int command : {7, 255})
            QVERIFY(dropped(frame(1, 11, command), 11));
        for (int length : {1, 4}) // no channel in it: zero
            QVERIFY(dropped(frame(1, length, 2), length));
    }

    void trustsLengths()
    {
        const QStringList waiting("waiting"), dropped("dropped");
        const QStringList zero{"1:2:0", "2:2:9", "waiting"};
        const std::tuple<int, QStringList, const char *> rows[] = {{-1, dropped, "blocked"},
                                                                   {0, dropped, "blocked"},
                                                                   {INT_MAX, waiting, "overlong"},
                                                                   {257, waiting, "overlong"},
                                                                   {256, waiting, ""},
                                                                   {5, {"1:0:0", "2:2:9", "waiting"}, ""},
                                                                   {10, zero, ""},
                                                                   {13, zero, ""},
                                                                   {14, {"1:2:5", "2:2:9", "waiting"}, ""},
                                                                   {16, {"1:2:5", "2:2:9", "waiting"}, ""}};
        for (const auto &[length, first, state] : rows) {
            PidParser parser;
            QByteArray bytes = frame(1, length, 2, "05000000") + '\0';
            if (length > 0 && length < bytes.size())
                bytes.truncate(qMax(10, length)); // with the complete length in it
            QCOMPARE(run(parser, bytes + actual(2, 9)), first);
            QCOMPARE(QString(parser.isBlocked() ? "blocked" : parser.isOverlong() ? "overlong" : ""), state);
            if (!parser.isOverlong())
                continue;
            parser.skipHead();
            QCOMPARE(run(parser), (QStringList{"2:2:9", "waiting"}));
        }
        PidParser shortest;
        shortest.append(frame(1, 1, 2), 0);
        QVERIFY(!shortest.isBlocked());
    }

    void limitsWhatIsBlocked()
    {
        PidParser parser;
        run(parser, frame(1, 0, 2));
        const int before = parser.size();
        for (int i = 0; i < 100; ++i)
            QCOMPARE(run(parser, QByteArray(60000, 'x')), QStringList("dropped"));
        QCOMPARE(parser.size(), before + 120000); // the first beyond 64 KB, and no more
        parser.clear();
        QCOMPARE(run(parser, actual(2, 9)), (QStringList{"2:2:9", "waiting"}));
    }

    void readsGains()
    {
        PidParser parser;
        PidReport report;
        parser.append(frame(4, 23, 3, "0000803f000080ff0000003f") + frame(4, 16, 3, "0000004000"), 0);
        for (const PidGains &gains : {PidGains{1, -std::numeric_limits<float>::infinity(), 0.5F},
                                      PidGains{2, 0, 0}}) { // bytes beyond the end are zero
            QCOMPARE(parser.next(&report), Outcome::Report);
            QVERIFY(report.gains.p == gains.p && report.gains.i == gains.i && report.gains.d == gains.d);
        }
    }

    void stampsAReportWhenItsLastByteArrived()
    {
        PidParser parser;
        PidReport report;
        const auto next = [&] { return parser.next(&report) == Outcome::Report ? report.arrivalUs : -1; };
        const QByteArray good = actual(1, 1);
        parser.append(good + good.left(14), 1000);
        QCOMPARE(next(), 1000);
        QCOMPARE(next(), -1);
        parser.append(good.right(1) + frame(9, 11, 4) + good, 2000);
        parser.append(good, 3000);
        QCOMPARE(next(), 2000);
        QCOMPARE(next(), -1); // ends the run; what is left keeps its time
        parser.append(good, 4000);
        QCOMPARE(next(), 2000);
        QCOMPARE(next(), 3000);
        QCOMPARE(next(), 4000);
        parser.append(good.left(14), 5000);
        parser.clear();
        parser.append(good, 6000);
        QCOMPARE(next(), 6000);
    }

    void keepsTenSeconds()
    {
        m_recorder->addActual(4, 7, 0); // another channel's newest does not count
        for (int i = 0; i <= 30; ++i) {
            m_recorder->params(1).target = -i;
            m_recorder->addActual(1, i, i * 1000000);
            QCOMPARE(samples(1).at(0).actual, qMax(0, i - 10));
        }
        QCOMPARE(samples(1).size(), 11); // 20 s to 30 s
        QVERIFY(samples(1).begin() == 20 && samples(1).end() == 31);
        QCOMPARE(samples(1).at(5).actual, 25);
        QCOMPARE(samples(1).at(0).target, -20);
        QCOMPARE(samples(4).size(), 1);
        m_recorder->setOrigin(20000000);
        m_recorder->addEvent({PidEvent::Target, 0, 0, true, {}, 0});
        m_recorder->setHeld(true);
        m_recorder->clear();
        QVERIFY(m_recorder->shown()[1].isEmpty());
        QCOMPARE(m_recorder->secondsOf(21500000), 1.5);
        QVERIFY(samples(1).isEmpty() && samples(1).end() == 0);
        QCOMPARE(m_recorder->record(1).end(), 31); // all of them
        QCOMPARE(m_recorder->events().size(), size_t(1));
        QCOMPARE(m_recorder->recorded(), 32ULL);
        // And no more of a flood.
        for (int i = 0; i < 500000; ++i)
            m_recorder->addActual(0, i, i);
        QCOMPARE(samples(0).size(), 200000);
        QCOMPARE(samples(0).at(0).actual, 300000);
        m_recorder->clearRecord();
        QVERIFY(m_recorder->record(1).isEmpty() && m_recorder->events().empty());
    }

    void recordsEvents()
    {
        m_session->setOpen(true);
        m_session->sendGains(1, {1.5F, 0, 0}, 10);
        m_session->sendTarget(1, 300, 20);
        m_session->sendPeriod(1, 5, 30);
        m_session->start(1, 40);
        m_session->stop(1, 45);
        m_session->receive(report(2, PidFrame::Period, PidFrame::int32ToBytes(6)) +
                               report(3, PidFrame::Target, PidFrame::int32ToBytes(-1)) +
                               report(3, PidFrame::Pid, PidFrame::floatToBytes(2).repeated(3)) +
                               report(2, PidFrame::Started) + report(2, PidFrame::Stopped) +
                               PidFrame::build(0, 1, {}) + actual(2, 299),
                           50);
        QStringList events;
        for (const PidEvent &e : m_recorder->events())
            events << QString("%1 CH%2 %3 %4 %5 %6")
                          .arg(e.kind)
                          .arg(e.channel + 1)
                          .arg(e.us)
                          .arg(e.isReport)
                          .arg(double(e.gains.p))
                          .arg(e.value);
        QCOMPARE(events, (QStringList{"2 CH2 10 0 1.5 0", "3 CH2 20 0 0 300", "4 CH2 30 0 0 5",
                                      "0 CH2 40 0 0 0", "1 CH2 45 0 0 0", "4 CH2 50 1 0 6", "3 CH3 50 1 0 -1",
                                      "2 CH3 50 1 2 0", "0 CH2 50 1 0 0", "1 CH2 50 1 0 0"}));
        QCOMPARE(m_sent, (QStringList{"10:1", "11:1", "15:1", "12:1", "13:1"}));
        QCOMPARE(samples(1).last().target, 300); // as sent
        QCOMPARE(samples(1).last().us, 50);
        QCOMPARE(m_recorder->params(1).period, 6); // as reported
        QCOMPARE(m_recorder->params(1).gains.p, 1.5F);
        QCOMPARE(m_recorder->params(2).target, -1);
        QCOMPARE(m_recorder->params(2).gains.d, 2.0F);
    }

    void sendsNothingWhileClosed()
    {
        m_session->sendGains(0, {1, 2, 3}, 0);
        m_session->sendTarget(0, 9, 0);
        m_session->reset(0);
        QVERIFY(m_sent.isEmpty() && m_recorder->events().empty());
        QCOMPARE(m_recorder->params(0).gains.i, 2.0F); // stored all the same
        QCOMPARE(m_recorder->params(0).target, 9);
    }

    void forgetsWhatWasStarted()
    {
        const auto stopped = [this](int selected, bool runs) {
            m_sent.clear();
            m_session->stopAll(selected, runs, 0);
            return m_sent.join(' ');
        };
        start({0, 2, 4});
        QCOMPARE(stopped(2, false), "13:0 13:4 13:2"); // the selected one at last
        QCOMPARE(stopped(2, false), "");
        QCOMPARE(stopped(3, true), "13:3"); // started by someone else
        start({0, 1});
        m_session->stop(0, 0);
        m_session->receive(report(2, PidFrame::Stopped), 0); // by the board
        QCOMPARE(stopped(4, false), "");
        start({1});
        m_session->setOpen(false); // unplugged
        m_session->setOpen(true);
        QCOMPARE(stopped(0, false), "");
    }

    void showsNothingWhilePaused()
    {
        m_session->setPaused(true);
        m_session->receive(actual(1, 1) + report(1, PidFrame::Target, PidFrame::int32ToBytes(9)), 10);
        QCOMPARE(m_recorder->params(0).target, 0); // the run ended; the rest waits
        m_session->parse();
        QCOMPARE(m_recorder->params(0).target, 9);
        for (int i = 0; i < 1000; ++i) // pending bytes do not pile up
            m_session->receive(actual(1, 1).repeated(10), 20);
        QVERIFY(samples(0).isEmpty());
        QVERIFY(m_recorder->record(0).end() > 9900); // kept all the same
        m_session->setPaused(false);
        m_session->parse();
        QVERIFY(samples(0).size() <= 256 / 15);
        m_session->receive((report(9, PidFrame::Started) + actual(1, 1)).repeated(100), 30); // nor here
        QVERIFY(samples(0).size() >= 100 - 256 / 26);
    }

    void skipsAFalseLength()
    {
        QSignalSpy skipped(m_session.get(), &PidSession::lengthSkipped);
        m_session->receive(QByteArray::fromHex("4f52564e01ffffff7f0200000000") + actual(1, 7), 10);
        QCoreApplication::processEvents();
        QVERIFY(samples(0).isEmpty() && skipped.isEmpty()); // not at once
        timeout()->setInterval(60);
        QTimer feed; // a board that goes on reporting
        connect(&feed, &QTimer::timeout, this, [this] { m_session->receive(actual(1, 8), 20); });
        feed.start(10);
        QVERIFY(skipped.wait(20000));
        QCOMPARE(samples(0).at(0).actual, 7);
        QCOMPARE(samples(0).at(0).us, 10); // when it was read
        QCOMPARE(samples(0).last().us, 20);
    }

    void reportsABlockedLink()
    {
        QSignalSpy blocked(m_session.get(), &PidSession::blocked);
        const QByteArray zeroLength = QByteArray::fromHex("4f52564e01000000000000");
        for (const int reported : {1, 2}) {
            m_session->receive(zeroLength, 0);
            timeout()->setInterval(1);
            QTRY_COMPARE(blocked.count(), reported);
            m_session->receive(actual(1, 7), 0);
            QVERIFY(samples(0).isEmpty() && !timeout()->isActive()); // said once
            m_session->setOpen(true);                                // drops what is blocked
        }
        m_session->receive(PidFrame::build(9, 1, {}) + zeroLength + QByteArray(300, 'x'), 0); // returns
        m_session->setOpen(false);
        QVERIFY(!timeout()->isActive());
        m_session->receive(actual(1, 7), 0);
        QCOMPARE(samples(0).size(), 1);
    }

    void exports()
    {
        m_recorder->params(1).target = 1000000;
        m_recorder->addActual(1, -1000000, 0);
        m_recorder->params(1).target = 100;
        m_recorder->addActual(1, 1234567, 0);
        m_recorder->params(1).target = INT_MIN;
        m_recorder->addActual(1, 1234567, 0);
        PidExport tables(m_recorder->shown());
        QVERIFY(!tables.advance(2) && !tables.advance(0) && tables.advance(1));
        // "PID调试数据", "通道 n 数据如下：" and "序号,实际值,目标值,差值" in GB18030.
        QByteArray expected = QByteArray::fromHex("504944b5f7cad4cafdbedd0a");
        for (char n = '1'; n <= '5'; ++n) {
            expected +=
                QByteArray::fromHex("cda8b5c020") + n + QByteArray::fromHex("20cafdbeddc8e7cfc2a3ba0a");
            expected += QByteArray::fromHex("d0f2bac52ccab5bccad6b52cc4bfb1ead6b52cb2eed6b50a");
            if (n == '2')
                expected +=
                    "1,-1e+06,1e+06,-2e+06\n2,1.23457e+06,100,1.23447e+06\n3,1.23457e+06,-2.14748e+09,2."
                    "14872e+09\n";
            expected += "\n\n";
        }
        QCOMPARE(tables.text(), expected);
    }

private:
    void start(const QVector<int> &channels)
    {
        m_session->setOpen(true);
        for (const int channel : channels)
            m_session->start(channel, 0);
    }
    // That of a frame whose length is not reached.
    QTimer *timeout() const { return m_session->findChild<QTimer *>(); }
    const PidSamples &samples(int channel) const { return m_recorder->samples().at(size_t(channel)); }

    std::unique_ptr<PidRecorder> m_recorder;
    std::unique_ptr<PidSession> m_session;
    QStringList m_sent; // "command:channel", commands in hexadecimal
};

QTEST_GUILESS_MAIN(TestPidSession)
#include "test_pid_session.moc"
