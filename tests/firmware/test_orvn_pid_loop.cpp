// A control loop of the board and the ring between interrupt and main loop,
// beside the controller of the simulated board.

#include "orvn_pid_loop.h"
#include "orvn_ring.h"
#include "pidcontroller.h"

#include <QtTest>

#include <cstring>

namespace {

constexpr float kLimit = 1000; // the simulated board's

orvn_pid_loop startedLoop(float p, float i, float d, int period, float limit = kLimit)
{
    orvn_pid_loop loop = ORVN_PID_LOOP_INIT(p, i, d, period, limit);
    loop.running = 1;
    return loop;
}

void obey(orvn_pid_loop &loop, int code, int value = 0, float gain = 0, float i = 0)
{
    const orvn_pid_command command{static_cast<uint8_t>(code), 1, gain, i, -gain, value};
    orvn_pid_loop_obey(&loop, &command);
}

QByteArray s_sent; // codes of the reports
int s_room;

int sendSome(const uint8_t *frame, size_t)
{
    if (s_room-- <= 0)
        return 0;
    s_sent += static_cast<char>('0' + frame[9]);
    return 1;
}

QByteArray sentBy(orvn_pid_loop &loop, int room)
{
    s_sent.clear();
    s_room = room;
    orvn_pid_loop_report(&loop, 1, sendSome);
    return s_sent;
}

} // namespace

class TestOrvnPidLoop : public QObject
{
    Q_OBJECT

private slots:
    void controlsLikeTheSimulatedBoard()
    {
        const struct
        {
            float p, i, d;
            int period;
        } rows[] = {
            {0.8F, 1, 0, 10}, {2, 5, 0.1F, 1}, {0.5F, 3, 0.02F, 1000}, {30, 40, 1, 5}, {-2, -1, 0, 20}};
        for (const auto &row : rows) {
            orvn_pid_loop loop = startedLoop(row.p, row.i, row.d, row.period);
            Boardsim::PidController other;
            other.setGains(double(row.p), double(row.i), double(row.d));
            double process = 40;
            for (int k = 0; k < 3000; ++k) {
                if (k == 2000) { // put back to rest
                    obey(loop, ORVN_PID_RESET);
                    other.reset();
                }
                loop.target = k % 500 < 250 ? 500 : -20000; // the second one is out of reach
                const int measured = qRound(process);
                const float output = orvn_pid_loop_step(&loop, measured);
                const double expected = other.control(loop.target, measured, row.period / 1000.0);
                QVERIFY2(
                    qAbs(double(output) - expected) < 0.1,
                    qPrintable(QString("%1 in step %2, not %3").arg(double(output)).arg(k).arg(expected)));
                process += (expected - process) * row.period / (200 + row.period);
            }
        }
    }

    // After the worst that the host may send the loop controls as before.
    void survivesAllValues()
    {
        orvn_pid_loop loop = startedLoop(0, 0, 0, 1);
        const float largest = 3.4e38F;
        for (const float gain : {largest, -largest, 1e-45F})
            for (const float i : {largest, -largest})
                for (const int target : {INT_MAX, INT_MIN, 0}) {
                    obey(loop, ORVN_PID_SET_GAINS, 0, gain, i);
                    obey(loop, ORVN_PID_SET_TARGET, target);
                    for (int k = 0; k < 40; ++k) {
                        const float output = orvn_pid_loop_step(&loop, k % 3 ? INT_MIN : INT_MAX);
                        quint32 bits;
                        std::memcpy(&bits, &output, sizeof bits);
                        QVERIFY((bits & 0x7FFFFFFFU) <= 0x447A0000U); // 1000
                    }
                }
        obey(loop, ORVN_PID_SET_GAINS, 0, 0.5F, 0);
        obey(loop, ORVN_PID_SET_TARGET, 100);
        for (int k = 0; k < 2000; ++k)
            orvn_pid_loop_step(&loop, 60);
        QCOMPARE(qRound(orvn_pid_loop_step(&loop, 60)), 20);
        orvn_pid_loop forgotten{}; // not initialized
        forgotten.running = 1;
        obey(forgotten, ORVN_PID_SET_GAINS, 0, 5);
        QCOMPARE(orvn_pid_loop_step(&forgotten, -100), 0.0F);
    }

    void isDueOncePerPeriod()
    {
        const auto times = [](orvn_pid_loop &loop, quint32 from, int count) {
            QVector<int> due;
            for (int k = 0; k < count; ++k)
                if (orvn_pid_loop_due(&loop, from + quint32(k))) {
                    due.append(k);
                    orvn_pid_loop_step(&loop, 0);
                }
            return due;
        };
        orvn_pid_loop loop = ORVN_PID_LOOP_INIT(1, 0, 0, 10, kLimit);
        QCOMPARE(times(loop, 0, 50), QVector<int>());
        obey(loop, ORVN_PID_START);
        const quint32 start = 0xFFFFFFF0U; // wraps
        QCOMPARE(times(loop, start, 35), (QVector<int>{0, 10, 20, 30}));
        obey(loop, ORVN_PID_SET_PERIOD, 7);
        for (const int refused : {0, -1, 1001, INT_MIN})
            obey(loop, ORVN_PID_SET_PERIOD, refused);
        QCOMPARE(times(loop, start + 35, 10), (QVector<int>{2, 9}));
        QCOMPARE(loop.late, 0U);
        QCOMPARE(times(loop, start + 100, 10), (QVector<int>{0, 7})); // was away
        QCOMPARE(loop.late, 1U);
        obey(loop, ORVN_PID_STOP);
        QCOMPARE(times(loop, start + 110, 20), QVector<int>());
        obey(loop, ORVN_PID_START);
        QCOMPARE(times(loop, start + 0x90000000U, 10), (QVector<int>{0, 7}));
    }

    // Reports are put off where there is no room, and never forgotten.
    void reportsWhatHolds()
    {
        orvn_pid_loop loop = ORVN_PID_LOOP_INIT(1, 0, 0, 10, kLimit);
        QCOMPARE(sentBy(loop, 9), QByteArray("5136"));
        QCOMPARE(sentBy(loop, 9), QByteArray());
        obey(loop, ORVN_PID_SET_PERIOD, 2000);
        obey(loop, ORVN_PID_START);
        for (int k = 0; k < 100; ++k)
            obey(loop, ORVN_PID_SET_GAINS, 0, float(k));
        QCOMPARE(sentBy(loop, 0), QByteArray());
        QCOMPARE(sentBy(loop, 1), QByteArray("4"));
        obey(loop, ORVN_PID_SET_TARGET, 5);
        QCOMPARE(sentBy(loop, 9), QByteArray("136"));
        obey(loop, ORVN_PID_RESET);
        QCOMPARE(sentBy(loop, 9), QByteArray("1"));
    }

    void passesBytesOn()
    {
        orvn_ring ring = ORVN_RING_INIT;
        uint8_t byte = 0;
        QVERIFY(!orvn_ring_get(&ring, &byte));
        uint8_t written = 0;
        uint8_t read = 0;
        for (int k = 0; k < 70000; ++k) { // beyond what the counters count
            const uint8_t three[] = {written, uint8_t(written + 1), uint8_t(written + 2)};
            QVERIFY(orvn_ring_put_all(&ring, three, 3));
            written = uint8_t(written + 3);
            const int kept = k % 254;
            while (int(orvn_ring_used(&ring)) > kept) {
                QVERIFY(orvn_ring_get(&ring, &byte));
                QCOMPARE(byte, read++);
            }
        }
        while (orvn_ring_used(&ring) < 254)
            QVERIFY(orvn_ring_put(&ring, written++));
        const uint8_t three[] = {1, 2, 3};
        QVERIFY(!orvn_ring_put_all(&ring, three, 3) && orvn_ring_put_all(&ring, three, 2));
        QVERIFY(!orvn_ring_put(&ring, 9) && ring.lost == 1 && orvn_ring_used(&ring) == 256);
        orvn_ring garbage;
        std::memset(&garbage, 0x11, sizeof garbage);
        garbage.written = 0xF000;
        QCOMPARE(int(orvn_ring_used(&garbage)), 256);
        QVERIFY(!orvn_ring_put_all(&garbage, three, size_t(-1)));
    }
};

QTEST_APPLESS_MAIN(TestOrvnPidLoop)
#include "test_orvn_pid_loop.moc"
