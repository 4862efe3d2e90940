// A control loop of the board and the ring between interrupt and main loop,
// beside the controller of the simulated board.

#include "orvn_pid_loop.h"
#include "orvn_ring.h"
#include "pidcontroller.h"

#include <QtTest>

#include <cstring>

namespace {

constexpr float kLimit = 1000; // the simulated board's

void obey(orvn_pid_loop &loop, int code, int value = 0, float gain = 0, float i = 0)
{
    const orvn_pid_command command{static_cast<uint8_t>(code), 1, gain, i, -gain, value};
    orvn_pid_loop_obey(&loop, &command);
}

// The codes of the reports that are sent while there is room.
QByteArray reported(orvn_pid_loop &loop, int room = 9)
{
    static QByteArray codes;
    static int left;
    codes.clear();
    left = room;
    orvn_pid_loop_report(&loop, 1, [](const uint8_t *frame, size_t) {
        if (left-- > 0)
            codes += static_cast<char>('0' + frame[9]);
        return left >= 0 ? 1 : 0;
    });
    return codes;
}

// The milliseconds behind a time at which a step was due.
QVector<int> due(orvn_pid_loop &loop, quint32 from, int count)
{
    QVector<int> times;
    for (int k = 0; k < count; ++k)
        if (orvn_pid_loop_due(&loop, from + quint32(k))) {
            times.append(k);
            orvn_pid_loop_step(&loop, 0);
        }
    return times;
}

} // namespace

class TestOrvnPidLoop : public QObject
{
    Q_OBJECT

private slots:
    void controlsLikeTheSimulatedBoard()
    {
        const float rows[][4] = {
            {0.8F, 1, 0, 10}, {2, 5, 0.1F, 1}, {0.5F, 3, 0.02F, 1000}, {30, 40, 1, 5}, {-2, -1, 0, 20}};
        for (const auto &[p, i, d, period] : rows) {
            orvn_pid_loop loop = ORVN_PID_LOOP_INIT(0, 0, 0, int(period), kLimit);
            const orvn_pid_command command{ORVN_PID_SET_GAINS, 1, p, i, d, 0};
            orvn_pid_loop_obey(&loop, &command);
            Boardsim::PidController other;
            other.setGains(double(p), double(i), double(d));
            double process = 40;
            for (int k = 0; k < 3000; ++k) {
                if (k == 2000) {
                    obey(loop, ORVN_PID_RESET);
                    other.reset();
                }
                loop.target = k % 500 < 250 ? 500 : -20000; // the second one is out of reach
                const int measured = qRound(process);
                const double output = double(orvn_pid_loop_step(&loop, measured));
                const double expected = other.control(loop.target, measured, double(period) / 1000);
                QVERIFY2(qAbs(output - expected) < 0.1, qPrintable(QString("step %1").arg(k)));
                process += (expected - process) * double(period / (200 + period));
            }
            obey(loop, ORVN_PID_SET_GAINS);
            QCOMPARE(orvn_pid_loop_step(&loop, 0), 0.0F); // nothing is left of the past
        }
    }

    // After the worst that the host may send the loop controls as before.
    void survivesAllValues()
    {
        orvn_pid_loop loop = ORVN_PID_LOOP_INIT(0, 0, 0, 1, kLimit);
        for (const float gain : {3.4e38F, -3.4e38F, 1e-45F})
            for (const int target : {INT_MAX, INT_MIN, 0}) {
                obey(loop, ORVN_PID_SET_GAINS, 0, gain, target < 0 ? gain : -gain);
                obey(loop, ORVN_PID_SET_TARGET, target);
                for (int k = 0; k < 40; ++k) {
                    const float output = orvn_pid_loop_step(&loop, k % 3 ? INT_MIN : INT_MAX);
                    quint32 bits;
                    std::memcpy(&bits, &output, sizeof bits);
                    QVERIFY((bits & 0x7FFFFFFFU) <= 0x447A0000U); // 1000
                }
            }
        obey(loop, ORVN_PID_SET_GAINS, 0, 0.5F);
        obey(loop, ORVN_PID_SET_TARGET, 100);
        for (int k = 0; k < 2000; ++k)
            orvn_pid_loop_step(&loop, 60);
        QCOMPARE(qRound(orvn_pid_loop_step(&loop, 60)), 20);
        orvn_pid_loop forgotten{}; // to be initialized
        obey(forgotten, ORVN_PID_SET_GAINS, 0, 5);
        QCOMPARE(orvn_pid_loop_step(&forgotten, -100), 0.0F);
    }

    void isDueOncePerPeriod()
    {
        orvn_pid_loop loop = ORVN_PID_LOOP_INIT(1, 0, 0, 10, kLimit);
        QCOMPARE(due(loop, 0, 50), QVector<int>());
        obey(loop, ORVN_PID_START);
        const quint32 start = 0xFFFFFFF0U; // wraps
        QCOMPARE(due(loop, start, 35), (QVector<int>{0, 10, 20, 30}));
        obey(loop, ORVN_PID_SET_PERIOD, 7);
        for (const int refused : {0, -1, 1001, INT_MIN})
            obey(loop, ORVN_PID_SET_PERIOD, refused);
        QCOMPARE(due(loop, start + 35, 10), (QVector<int>{2, 9}));
        QCOMPARE(loop.late, 0U);
        QCOMPARE(due(loop, start + 100, 10), (QVector<int>{0, 7})); // was away
        QCOMPARE(loop.late, 1U);
        obey(loop, ORVN_PID_STOP);
        QCOMPARE(due(loop, start + 110, 20), QVector<int>());
        obey(loop, ORVN_PID_START);
        QCOMPARE(due(loop, start + 0x90000000U, 10), (QVector<int>{0, 7}));
        for (const int accepted : {1000, 1}) {
            obey(loop, ORVN_PID_SET_PERIOD, accepted);
            QCOMPARE(loop.period, accepted);
        }
    }

    // Reports are put off where there is no room, and never forgotten.
    void reportsWhatHolds()
    {
        orvn_pid_loop loop = ORVN_PID_LOOP_INIT(1, 0, 0, 10, kLimit);
        QCOMPARE(reported(loop), QByteArray("5136"));
        QCOMPARE(reported(loop), QByteArray());
        obey(loop, ORVN_PID_SET_PERIOD, 2000);
        obey(loop, ORVN_PID_START);
        for (int k = 0; k < 100; ++k)
            obey(loop, ORVN_PID_SET_GAINS, 0, float(k));
        QCOMPARE(reported(loop, 0), QByteArray());
        QCOMPARE(reported(loop, 1), QByteArray("4"));
        obey(loop, ORVN_PID_RESET);
        QCOMPARE(reported(loop), QByteArray("136"));
    }

    void passesBytesOn()
    {
        orvn_ring ring = ORVN_RING_INIT;
        uint8_t next = 0;
        uint8_t read = 0;
        uint8_t byte = 0;
        for (int k = 0; k < 70000; ++k) { // beyond what the counters count
            const uint8_t two[] = {next, uint8_t(next + 1)};
            QVERIFY(orvn_ring_put_all(&ring, two, 2));
            next = uint8_t(next + 2);
            for (const size_t kept = size_t(k) % 255; orvn_ring_used(&ring) > kept; ++read)
                QVERIFY(orvn_ring_get(&ring, &byte) && byte == read);
        }
        while (orvn_ring_used(&ring) < 255)
            QVERIFY(orvn_ring_put(&ring, 0));
        const uint8_t two[] = {1, 2};
        QVERIFY(!orvn_ring_put_all(&ring, two, 2) && !orvn_ring_put_all(&ring, two, size_t(-1)));
        QVERIFY(orvn_ring_put(&ring, 9) && !orvn_ring_put(&ring, 9) && ring.lost == 1);
        ring.read = uint16_t(ring.written + 1U); // as not initialized
        QVERIFY(orvn_ring_used(&ring) == 256 && !orvn_ring_put(&ring, 9));
        ring.read = ring.written;
        QVERIFY(!orvn_ring_get(&ring, &byte));
    }
};

QTEST_APPLESS_MAIN(TestOrvnPidLoop)
#include "test_orvn_pid_loop.moc"
