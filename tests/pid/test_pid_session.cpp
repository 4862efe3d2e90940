// What the recorder keeps of a board's reports and of the commands to it, and
// what the session sends by itself. Times are the test's.

#include "pidexport.h"
#include "pidsession.h"

#include <QtTest>

namespace {

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
        m_recorder->clear();
        QCOMPARE(m_recorder->secondsOf(21500000), 1.5);
        QVERIFY(samples(1).isEmpty() && samples(1).end() == 0);
        QCOMPARE(m_recorder->recorded(), 32ULL);
    }

    void limitsAFlood()
    {
        for (int i = 0; i < 500000; ++i)
            m_recorder->addActual(0, i, i);
        QCOMPARE(samples(0).size(), 200000);
        QCOMPARE(samples(0).at(0).actual, 300000);
        for (int i = 0; i < 5000; ++i)
            m_recorder->addEvent({PidEvent::Target, 0, i, true, {}, i});
        QCOMPARE(m_recorder->events().size(), size_t(1000));
        QCOMPARE(m_recorder->events().front().value, 4000);
    }

    void recordsEvents()
    {
        m_session->setOpen(true);
        m_session->sendGains(1, {1.5F, 0, 0}, 10);
        m_session->sendTarget(1, 300, 20);
        m_session->sendPeriod(1, 5, 30);
        m_session->start(1, 40);
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
                                      "0 CH2 40 0 0 0", "4 CH2 50 1 0 6", "3 CH3 50 1 0 -1", "2 CH3 50 1 2 0",
                                      "0 CH2 50 1 0 0", "1 CH2 50 1 0 0"}));
        QCOMPARE(m_sent, (QStringList{"10:1", "11:1", "15:1", "12:1"}));
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

    void recordsNothingWhilePaused()
    {
        m_session->setPaused(true);
        m_session->receive(actual(1, 1) + report(1, PidFrame::Target, PidFrame::int32ToBytes(9)), 10);
        QCOMPARE(m_recorder->params(0).target, 0); // the run ended; the rest waits
        m_session->parse();
        QCOMPARE(m_recorder->params(0).target, 9);
        for (int i = 0; i < 1000; ++i) // pending bytes do not pile up
            m_session->receive(actual(1, 1).repeated(10), 20);
        QVERIFY(samples(0).isEmpty());
        m_session->setPaused(false);
        m_session->parse();
        QVERIFY(samples(0).size() <= 256 / 15);
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
        const QByteArray zeroLength = QByteArray::fromHex("4f52564e010000000000000000");
        for (const int reported : {1, 2}) {
            m_session->receive(zeroLength, 0);
            timeout()->setInterval(1);
            QTRY_COMPARE(blocked.count(), reported);
            m_session->receive(actual(1, 7), 0);
            QVERIFY(samples(0).isEmpty());
            m_session->setOpen(true); // drops what is blocked
        }
        m_session->receive(PidFrame::build(9, 1, {}) + zeroLength + QByteArray(300, 'x'), 0); // returns
        m_session->setOpen(false);
        QVERIFY(!timeout()->isActive());
        m_session->receive(actual(1, 7), 0);
        QCOMPARE(samples(0).size(), 1);
    }

    void exports()
    {
        m_recorder->params(1).target = 100;
        m_recorder->addActual(1, 1000000, 0);
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
                expected += "1,1e+06,100,999900\n2,1.23457e+06,100,1.23447e+06\n3,1.23457e+06,-2.14748e+09,2."
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
