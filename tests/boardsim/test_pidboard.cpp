// The five control loops of the simulated board, without a port.

#include "pidboard.h"
#include "pidframe.h"

#include <QtTest>

using Boardsim::PidBoard;

namespace {

QByteArray frame(int channel, int code, const QByteArray &payload = {})
{
    return PidFrame::build(static_cast<quint8>(code), static_cast<quint8>(channel),
                           QByteArray::fromHex(payload));
}

QByteArray answer(PidBoard &board, const QByteArray &command)
{
    (void)board.takeOutput();
    board.receive(command);
    return board.takeOutput();
}

// The actual values of a channel in what the board has sent.
QVector<int> actuals(const QByteArray &output, int channel)
{
    QVector<int> values;
    for (int at = 0; at + 15 <= output.size(); at += output.at(at + 5)) {
        if (output.at(at + 4) == channel && output.at(at + 9) == 2)
            values.append(qFromLittleEndian<qint32>(output.constData() + at + 10));
    }
    return values;
}

} // namespace

class TestPidBoard : public QObject
{
    Q_OBJECT

private slots:
    void answersEveryCommand()
    {
        PidBoard board(100, 0, 1);
        const char *gains = "0000c03f0000003f0000803e";
        QCOMPARE(answer(board, frame(2, 0x10, gains)), frame(2, 3, gains));
        QCOMPARE(answer(board, frame(5, 0x11, "00000080")), frame(5, 1, "00000080"));
        QCOMPARE(answer(board, frame(1, 0x12)), frame(1, 4));
        QCOMPARE(answer(board, frame(1, 0x13)), frame(1, 5));
        QCOMPARE(answer(board, frame(5, 0x14)), frame(5, 1, "00000080"));
        QCOMPARE(answer(board, frame(3, 0x15, "14000000")), frame(3, 6, "14000000"));
        QCOMPARE(answer(board, frame(3, 0x15, "00000000")), frame(3, 6, "14000000")); // not possible
        QCOMPARE(answer(board, frame(3, 0x16)), QByteArray());
        (void)board.takeOutput();
        board.greet(false);
        const QByteArray all[][3] = {{"00000000", "cdcc4c3f0000803f00000000", "0a000000"},
                                     {"00000000", gains, "0a000000"},
                                     {"00000000", "0000003f0000803f00000000", "14000000"},
                                     {"00000000", "9a99993e0000803f00000000", "0a000000"},
                                     {"00000080", "0000c03f0000803f00000000", "0a000000"}};
        QByteArray settings;
        for (int k = 0; k < 5; ++k)
            settings += frame(k + 1, 1, all[k][0]) + frame(k + 1, 3, all[k][1]) + frame(k + 1, 6, all[k][2]);
        QCOMPARE(board.takeOutput(), settings);
        // Started again it has forgotten all, and reports so.
        board.receive(frame(1, 0x11, "f4010000") + frame(1, 0x12));
        QVERIFY(board.isRunning());
        board.reset();
        QVERIFY(!board.isRunning() && !board.takeOutput().isEmpty());
        board.greet(true);
        const QByteArray greeting = board.takeOutput();
        QVERIFY(greeting.startsWith(frame(1, 1, "00000000") + frame(1, 3, "cdcc4c3f0000803f00000000") +
                                    frame(1, 6, "0a000000") + frame(1, 5)));
        QVERIFY(greeting.endsWith(frame(5, 6, "0a000000") + frame(5, 5)));
    }

    void reportsAtTheRate()
    {
        for (int rate : {70, 3000}) {
            PidBoard board(rate, 3, 1);
            board.receive(frame(4, 0x12));
            (void)board.takeOutput();
            board.advance(2000);
            const QVector<int> noise = actuals(board.takeOutput(), 4);
            QVERIFY(noise.size() == 2 * rate && noise.contains(-3) && noise.contains(3) &&
                    !noise.contains(4));
            board.receive(frame(4, 0x13));
            board.advance(1000);
            QCOMPARE(board.reports(), 2 * rate);
        }
    }

    // Put back to rest it does the same again, from the next control on.
    void settlesAndRepeatsItself()
    {
        const QByteArray gains[] = {"cdcc4c3f", "cdcc4c3e", "0000003f", "9a99993e", "0000c03f"}; // 0.8 to 1.5
        const int responses[][3] = {
            {86, 261, 333}, {19, 268, 300}, {0, 166, 293}, {80, 297, 407}, {202, 629, 725}};
        for (int channel = 1; channel <= 5; ++channel) {
            PidBoard board(1000, 0, 1);
            board.receive(frame(channel, 0x10, gains[channel - 1] + "0000803f0ad7233c") + // 1, 0.01
                          frame(channel, 0x11, "f4010000") + frame(channel, 0x12));
            board.advance(30005);
            const QVector<int> values = actuals(board.takeOutput(), channel);
            for (int i = 0; i < 3; ++i)
                QVERIFY(qAbs(values.at(100 + 400 * i) - responses[channel - 1][i]) <= 1);
            for (int value : values.mid(25000))
                QVERIFY2(qAbs(value - 500) <= 5, qPrintable(QString::number(value)));
            board.receive(frame(channel, 0x14));
            board.advance(30005);
            QCOMPARE(actuals(board.takeOutput(), channel), QVector<int>(5, 0) + values.mid(0, 30000));
        }
    }
};

QTEST_APPLESS_MAIN(TestPidBoard)
#include "test_pidboard.moc"
