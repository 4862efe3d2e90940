// Frames to the board, reports from it, and the exported text. Bytes are
// written out.

#include "pidexport.h"
#include "pidparser.h"

#include <QtTest>

#include <cmath>
#include <limits>

namespace {

using Outcome = PidParser::Outcome;

// A frame with a sum that is wrong, which nobody looks at.
QByteArray frame(int channel, int length, int command, const QByteArray &payloadHex = {})
{
    QByteArray bytes("ORVN");
    bytes += static_cast<char>(channel);
    for (int shift : {0, 8, 16, 24})
        bytes += static_cast<char>(length >> shift);
    bytes += static_cast<char>(command);
    return bytes + QByteArray::fromHex(payloadHex) + '\x55';
}

QByteArray actual(int channel, const QByteArray &valueHex)
{
    return frame(channel, 15, 2, valueHex);
}

// What a run gives: "channel:command:value" for each report, and how it ended.
QStringList run(PidParser &parser)
{
    QStringList found;
    PidReport report;
    for (;;) {
        const Outcome outcome = parser.next(&report);
        if (outcome != Outcome::Report)
            return found << (outcome == Outcome::Dropped ? "dropped" : "waiting");
        found << QStringLiteral("%1:%2:%3").arg(report.channel).arg(report.command).arg(report.value);
    }
}

QStringList run(PidParser &parser, const QByteArray &bytes)
{
    parser.append(bytes);
    return run(parser);
}

} // namespace

class TestPidLink : public QObject
{
    Q_OBJECT

private slots:
    void buildsFrames();
    void convertsNumbers();
    void parsesAnyCut();
    void skipsGarbage_data();
    void skipsGarbage();
    void dropsAndEndsTheRun_data();
    void dropsAndEndsTheRun();
    void believesLengths_data();
    void believesLengths();
    void readsGains();
    void staysSmall();
    void exports();
};

void TestPidLink::buildsFrames()
{
    QCOMPARE(PidFrame::build(0x10, 2, QByteArray::fromHex("0000c03f0000000000000000")),
             QByteArray::fromHex("4f52564e0217000000100000c03f00000000000000006d"));
    QCOMPARE(PidFrame::build(0x14, 5, {}), QByteArray::fromHex("4f52564e050b0000001469"));
}

void TestPidLink::convertsNumbers()
{
    const std::pair<qint32, const char *> integers[] = {
        {0, "00000000"}, {1, "01000000"}, {-1, "ffffffff"}, {INT_MIN, "00000080"}, {INT_MAX, "ffffff7f"}};
    for (const auto &[value, hex] : integers) {
        QCOMPARE(PidFrame::int32ToBytes(value).toHex(), QByteArray(hex));
        QCOMPARE(PidFrame::bytesToInt32(QByteArray::fromHex(hex)), value);
    }
    const std::pair<float, const char *> floats[] = {
        {1.5F, "0000c03f"}, {-0.1F, "cdccccbd"}, {INFINITY, "0000807f"}, {1e-45F, "01000000"}};
    for (const auto &[value, hex] : floats) {
        QCOMPARE(PidFrame::floatToBytes(value).toHex(), QByteArray(hex));
        QCOMPARE(PidFrame::bytesToFloat(QByteArray::fromHex(hex)), value);
    }
    QVERIFY(std::isnan(PidFrame::bytesToFloat(QByteArray::fromHex("0000c07f"))));
    for (int size : {0, 3, 5}) {
        QCOMPARE(PidFrame::bytesToInt32(QByteArray(size, '\x7f')), 0);
        QCOMPARE(PidFrame::bytesToFloat(QByteArray(size, '\x3f')), 0.0F);
    }
}

void TestPidLink::parsesAnyCut()
{
    const QByteArray bytes = actual(3, "2a000000") + frame(1, 11, 4) + frame(5, 15, 6, "ffffffff");
    const QStringList all{"3:2:42", "1:4:0", "5:6:-1", "waiting"};
    for (int cut = 0; cut <= bytes.size(); ++cut) {
        PidParser parser;
        QStringList found = run(parser, bytes.left(cut));
        found.removeLast();
        QCOMPARE(found + run(parser, bytes.mid(cut)), all);
        QCOMPARE(parser.size(), 0);
    }
    PidParser parser;
    QStringList found;
    for (const char byte : bytes) {
        found += run(parser, QByteArray(1, byte));
        found.removeLast();
    }
    QCOMPARE(found << "waiting", all);
}

void TestPidLink::skipsGarbage_data()
{
    QTest::addColumn<QByteArray>("garbage");
    for (const char *garbage : {"x", "O", "OO", "ORVO", "ORVM", "OROROR", "\r\nboot ok\r\n"})
        QTest::newRow(garbage) << QByteArray(garbage);
    QTest::newRow("long") << QByteArray(100000, 'O');
}

void TestPidLink::skipsGarbage()
{
    QFETCH(QByteArray, garbage);
    PidParser parser;
    QCOMPARE(run(parser, garbage), QStringList("waiting"));
    QCOMPARE(parser.size(), qMin(3, garbage.size())); // the last three stay
    QCOMPARE(run(parser, actual(1, "07000000") + garbage + actual(2, "08000000")),
             (QStringList{"1:2:7", "2:2:8", "waiting"}));
}

void TestPidLink::dropsAndEndsTheRun_data()
{
    QTest::addColumn<QByteArray>("bad");
    for (int channel : {0, 6, 255})
        QTest::addRow("channel %d", channel) << frame(channel, 15, 2, "01000000");
    for (int command : {7, 0x10, 0x7f, 255})
        QTest::addRow("command %d", command) << frame(1, 11, command);
    for (int length : {1, 2, 3, 4}) // no channel in it: zero
        QTest::addRow("length %d", length) << frame(1, length, 2).left(length);
}

void TestPidLink::dropsAndEndsTheRun()
{
    QFETCH(QByteArray, bad);
    // A frame of so few bytes shows its length only by what follows it.
    const bool isShort = bad.size() < 11;
    const QByteArray whole = isShort ? frame(1, bad.size(), 2) : bad;
    PidParser parser;
    QCOMPARE(run(parser, actual(1, "01000000") + whole + actual(2, "02000000")),
             (QStringList{"1:2:1", "dropped"}));
    QCOMPARE(parser.size(), whole.size() - bad.size() + 15);
    QCOMPARE(run(parser), (QStringList{"2:2:2", "waiting"})); // with the next arrival
}

void TestPidLink::believesLengths_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QStringList>("first");
    QTest::addColumn<bool>("blocks");
    QTest::newRow("negative") << -1 << QStringList("dropped") << true;
    QTest::newRow("lowest") << INT_MIN << QStringList("dropped") << true;
    QTest::newRow("0") << 0 << QStringList("dropped") << true;
    QTest::newRow("highest") << INT_MAX << QStringList("waiting") << true;
    QTest::newRow("5") << 5 << QStringList{"1:0:0", "2:2:9", "waiting"} << false;
    QTest::newRow("10") << 10 << QStringList{"1:2:0", "2:2:9", "waiting"} << false;
    QTest::newRow("11") << 11 << QStringList{"1:2:0", "2:2:9", "waiting"} << false;
    QTest::newRow("13") << 13 << QStringList{"1:2:0", "2:2:9", "waiting"} << false;
    QTest::newRow("16") << 16 << QStringList{"1:2:5", "2:2:9", "waiting"} << false;
}

void TestPidLink::believesLengths()
{
    QFETCH(int, length);
    QFETCH(bool, blocks);
    const QByteArray good = actual(2, "09000000");
    PidParser parser;
    QByteArray bytes = frame(1, length, 2, "05000000") + '\0';
    if (length > 0 && length < bytes.size())
        bytes.truncate(qMax(10, length)); // with the whole of the length in it
    QTEST(run(parser, bytes + good), "first");
    QCOMPARE(parser.isBlocked() || parser.isOverlong(), blocks);
    if (!blocks)
        return;
    QVERIFY(!run(parser, good).contains("2:2:9"));
    if (parser.isOverlong()) {
        parser.skipHead();
        QCOMPARE(run(parser), (QStringList{"2:2:9", "2:2:9", "waiting"}));
        return;
    }
    for (int i = 0; i < 100; ++i)
        QVERIFY(!run(parser, good.repeated(1000)).contains("2:2:9"));
    QVERIFY(parser.size() < 100000); // what waits is bounded
    parser.clear();
    QCOMPARE(run(parser, good), (QStringList{"2:2:9", "waiting"}));
}

void TestPidLink::readsGains()
{
    PidParser parser;
    parser.append(frame(4, 23, 3,
                        "0000c07f"
                        "000080ff"
                        "0000003f"));
    PidReport report;
    QCOMPARE(parser.next(&report), Outcome::Report);
    QVERIFY(std::isnan(report.p));
    QCOMPARE(report.i, -std::numeric_limits<float>::infinity());
    QCOMPARE(report.d, 0.5F);
    // Short: what is missing is zero.
    parser.append(frame(4, 19, 3,
                        "0000803f"
                        "000000")
                      .left(18) +
                  '\x40');
    QCOMPARE(parser.next(&report), Outcome::Report);
    QCOMPARE(report.p, 1.0F);
    QCOMPARE(report.d, 0.0F);
}

void TestPidLink::staysSmall()
{
    PidParser parser;
    const QByteArray many = actual(1, "01000000").repeated(1000);
    parser.append(many.left(7));
    for (int i = 0; i < 1000; ++i) { // 15 MB, never on a frame's border
        parser.append(many.mid(7) + many.left(7));
        (void)run(parser);
        QVERIFY(parser.size() < 15);
    }
    parser.clear();
    run(parser, frame(1, 0, 2)); // its length blocks the rest
    const int before = parser.size();
    parser.append(QByteArray(60000, 'x'));
    QCOMPARE(parser.size(), before + 60000); // kept, within bounds
    for (int i = 0; i < 100; ++i)
        parser.append(QByteArray(60000, 'x'));
    QVERIFY(parser.size() < 200000);
}

void TestPidLink::exports()
{
    const QVector<double> targets{100, 100, -2147483648.0};
    const QVector<double> actuals{0, 1234567};
    QVector<PidExport::Channel> channels(5);
    channels[1] = {targets.size(), [&](int k) { return targets.at(k); },
                   [&](int k) { return actuals.at(qMin(k, 1)); }};
    PidExport tables(channels);
    QVERIFY(!tables.advance(2) && !tables.advance(0) && tables.advance(1));
    // "PID调试数据", "通道 n 数据如下：" and "序号,实际值,目标值,差值" in GB18030.
    QByteArray expected = QByteArray::fromHex("504944b5f7cad4cafdbedd0a");
    for (char n = '1'; n <= '5'; ++n) {
        expected += QByteArray::fromHex("cda8b5c020") + n + QByteArray::fromHex("20cafdbeddc8e7cfc2a3ba0a");
        expected += QByteArray::fromHex("d0f2bac52ccab5bccad6b52cc4bfb1ead6b52cb2eed6b50a");
        if (n == '2')
            expected +=
                "1,0,100,-100\n2,1.23457e+06,100,1.23447e+06\n3,1.23457e+06,-2.14748e+09,2.14872e+09\n";
        expected += "\n\n";
    }
    QCOMPARE(tables.text(), expected);
}

QTEST_APPLESS_MAIN(TestPidLink)
#include "test_pid_link.moc"
