// Frames to the board and reports from it. Bytes are written out.

#include "pidparser.h"

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

QByteArray actual(int channel, const QByteArray &valueHex)
{
    return frame(channel, 15, 2, valueHex);
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

} // namespace

class TestPidLink : public QObject
{
    Q_OBJECT

private slots:
    void convertsNumbers()
    {
        const QByteArray lowest = QByteArray::fromHex("00000080");
        QCOMPARE(PidFrame::int32ToBytes(INT_MIN), lowest);
        QCOMPARE(PidFrame::bytesToInt32(lowest), INT_MIN);
        const QByteArray half = QByteArray::fromHex("0000c03f");
        QCOMPARE(PidFrame::floatToBytes(1.5F), half);
        QCOMPARE(PidFrame::bytesToFloat(half), 1.5F);
        for (int size : {3, 5}) {
            QCOMPARE(PidFrame::bytesToInt32(QByteArray(size, '\x7f')), 0);
            QCOMPARE(PidFrame::bytesToFloat(QByteArray(size, '\x3f')), 0.0F);
        }
    }

    void parsesAnyCut()
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
    }

    void skipsGarbage()
    {
        for (const QByteArray &garbage :
             {QByteArray("x"), QByteArray("OO"), QByteArray("ORVO"), QByteArray("OROROR"),
              QByteArray("\r\nboot ok\r\n"), QByteArray(100000, 'O')}) {
            PidParser parser;
            QCOMPARE(run(parser, garbage), QStringList("waiting"));
            QCOMPARE(parser.size(), qMin(3, garbage.size())); // may be the beginning of a frame
            QCOMPARE(run(parser, actual(1, "07000000") + garbage + actual(2, "08000000")),
                     (QStringList{"1:2:7", "2:2:8", "waiting"}));
        }
    }

    void dropsAndEndsTheRun()
    {
        const auto dropped = [](const QByteArray &bad, int length) {
            PidParser parser;
            const QStringList first = run(parser, actual(1, "01000000") + bad + actual(2, "02000000"));
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
                                                                   {16, {"1:2:5", "2:2:9", "waiting"}, ""}};
        for (const auto &[length, first, state] : rows) {
            PidParser parser;
            QByteArray bytes = frame(1, length, 2, "05000000") + '\0';
            if (length > 0 && length < bytes.size())
                bytes.truncate(qMax(10, length)); // with the complete length in it
            QCOMPARE(run(parser, bytes + actual(2, "09000000")), first);
            QCOMPARE(QString(parser.isBlocked() ? "blocked" : parser.isOverlong() ? "overlong" : ""), state);
            if (!parser.isOverlong())
                continue;
            parser.skipHead();
            QCOMPARE(run(parser), (QStringList{"2:2:9", "waiting"}));
        }
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
        QCOMPARE(run(parser, actual(2, "09000000")), (QStringList{"2:2:9", "waiting"}));
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
        const QByteArray good = actual(1, "01000000");
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
};

QTEST_APPLESS_MAIN(TestPidLink)
#include "test_pid_link.moc"
