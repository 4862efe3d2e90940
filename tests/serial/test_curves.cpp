// The numbers of log lines: which ones become curves, what a curve keeps of them,
// and the exported table.

#include "curvepoints.h"
#include "curvetable.h"
#include "numberlines.h"

#include <QTest>

#include <algorithm>

Q_DECLARE_METATYPE(NumberLines::Form)

class TestCurves : public QObject
{
    Q_OBJECT

private slots:
    void readsLines_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("expected");
        const QVector<QPair<const char *, const char *>> rows{
            {"a=1.5 b:2", "a=1.5 b=2"},
            {"  温度：-23.4C, hum : 4e1 %;x=+.5e-1", "温度=-23.4 hum=40 x=0.05"},
            {"Free heap: 12034 bytes, min heap: 0xA9", "Free heap=12034 min heap=169"},
            {"{\"imu\":{\"acc\":[1,2,-3],\"t\":21.5}}", "acc[0]=1 acc[1]=2 acc[2]=-3 t=21.5"},
            {"Temp (C): 21, P(kPa)=101.3, 3v3: 3.29 V", "Temp=21 P(kPa)=101.3 3v3=3.29"},
            {"a=nan b=2 c=-inf", "b=2"},
            {"temp 23.4 C hum 40 %", "temp=23.4 hum=40"},
            {"Accel 1.0,2.0 3", "Accel[0]=1 Accel[1]=2 Accel[2]=3"},
            {"I (1234) adc: v=12 mV", "v=12"},
            {"I (1234) adc: 45", "adc=45"},
            {"[12:00:01.123] [Tcp client 10.0.0.2:5000] a=1", "a=1"},
            {"2026-01-31 12:00:01,5 WARN: x 5", "x=5"},
            {"[00:00:01.234,567] <inf> app: x 5", "x=5"},
            {"12:00:01.123 -> 7;8", "列1=7 列2=8"},
            {"\x1b[0;32mI (5) t: q=1\x1b[0m", "q=1"},
            {"error: 0.5", "error=0.5"},
            {"INFO temp 5", "temp=5"},
            {"I (1234) 7;8", "列1=7 列2=8"},
            {"[task 7] 45", "列1=45"},
            {"<task 7> 45", "列1=45"},
            {"2026-01-31 7;8", "列1=7 列2=8"},
            {"12:00:01.5 7;8", "列1=7 列2=8"},
            {"12:00:01Z 7;8", "列1=7 列2=8"},
            {"a: b 5 c=1", "c=1"}, // a has no number
            {"temp 23，air hum 40", "temp=23 air hum=40"},
            {"1, -2.5 mV,3,", "列1=1 列2=-2.5 列3=3"},
            {"1\t2\t3", "列1=1 列2=2 列3=3"},
            {"[1 2  3]", "列1=1 列2=2 列3=3"},
            {"21.5 °C", "列1=21.5"},
            {"$IMU,1,OK,3", "$IMU 1=1 $IMU 3=3"},
            {"12:00:01,7,8", "列2=7 列3=8"},
            {"9007199254740993.5 0.1 123456789012345678",
             "列1=9007199254740994 列2=0.1 列3=123456789012345680"},
            // No numbers, although there are digits.
            {"192.168.1.1 up at 12:30:05", ""},
            {"boot v1.2.3 of 2026-01-31 12s34", ""},
            {"panic at 0x400d1234: core", ""},
            {"61 3D 31 ", ""},
            {"done", ""},
        };
        for (const auto &[line, expected] : rows)
            QTest::newRow(line) << QString::fromUtf8(line) << QString::fromUtf8(expected);
    }
    void readsLines()
    {
        QFETCH(QString, line);
        QFETCH(QString, expected);
        NumberLines lines;
        QCOMPARE(read(&lines, {line}), QString());
        QCOMPARE(read(&lines, {line}), expected.isEmpty() ? QString() : expected + ' ' + expected);
        QCOMPARE(lines.used(), expected.isEmpty() ? 0 : 2);
        QCOMPARE(lines.skipped(), expected.isEmpty() ? 2 : 0);
    }

    void readsChosenForms_data()
    {
        using Form = NumberLines::Form;
        QTest::addColumn<NumberLines::Form>("form");
        QTest::addColumn<QString>("expression");
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QString>("expected");
        QTest::newRow("heading") << Form::Columns << QString()
                                 << QStringList{"时间,\"温度\",hum", "1,2,3,", "-,,6"}
                                 << "时间=1 温度=2 hum=3 hum=6";
        QTest::newRow("words") << Form::Words << QString() << QStringList{"t=1", "1,2", "t 2"} << "t=1 t=2";
        QTest::newRow("pairs") << Form::Pairs << QString() << QStringList{"t 1", "n 5 t=1"} << "t=1";
        QTest::newRow("groups") << Form::Expression << "T(?<temp>\\S+) H(.*)"
                                << QStringList{"[1] T0x10 H 7%", "T1"} << "temp=16 数值2=7";
        QTest::newRow("no group") << Form::Expression << "\\d+" << QStringList{"ab 12c", "x"} << "数值=12";
        QTest::newRow("fault") << Form::Expression << "(" << QStringList{"("} << "";
    }
    void readsChosenForms()
    {
        QFETCH(NumberLines::Form, form);
        QFETCH(QString, expression);
        QFETCH(QStringList, lines);
        NumberLines numbers;
        numbers.start(form, expression);
        QTEST(read(&numbers, lines), "expected");
        QCOMPARE(numbers.used() + numbers.skipped(), lines.size());
        QCOMPARE(numbers.used() > 0, !QString(QTest::currentDataTag()).startsWith("fault"));
        QCOMPARE(!numbers.fault().isEmpty(), QString(QTest::currentDataTag()) == "fault");
    }

    // Lines in passing make no curve; a field without a number leaves a gap.
    void tellsShapesApart()
    {
        NumberLines lines;
        QCOMPARE(read(&lines, {"baud: 9600", "a=1", "1,2", "a=2 b=1", "a=3", "a=4 b=2", "1,ERR", "7,8"}),
                 QString("a=1 a=3 b=1 a=4 b=2 列1=1 列2=2 列1=1 列1=7 列2=8"));
        QCOMPARE(lines.names(), (QStringList{"a", "b", "列1", "列2"}));
        QCOMPARE(lines.used(), 7);
        QCOMPARE(lines.skipped(), 1);
        QCOMPARE(read(&lines, {"", "[12:00:01.123] ASCII >"}), QString());
        QCOMPARE(lines.skipped(), 1);
    }

    void isBounded()
    {
        NumberLines lines;
        for (int i = 0; i < 40; ++i)
            read(&lines, {QString("n%1=1").arg(i), QString("n%1=2").arg(i)});
        QCOMPARE(lines.names().size(), 32);
        QCOMPARE(lines.surplus(), 16);
        QCOMPARE(lines.skipped(), 16);
        for (int i = 0; i < 5000; ++i) // shapes that never come again
            read(&lines, {QString("once%1 5").arg(i)});
        QCOMPARE(read(&lines, {"n3=5"}), QString("n3=5"));
        QCOMPARE(read(&lines, {QString(5000, ' ') + "n3=5"}), QString()); // not looked at
        lines.start(NumberLines::Form::Expression, "(a+)+b(\\d)");
        const QString hard = QString(60, 'a') + 'b';
        for (int i = 0; i < 100 && !lines.hasGivenUp(); ++i)
            read(&lines, {hard});
        QVERIFY(lines.hasGivenUp());
    }

    void keepsTheNewestPoints()
    {
        CurvePoints points;
        for (int i = 0; i < 250000; ++i)
            points.append({i == 200123   ? 9.0
                           : i == 210123 ? -9.0
                           : i % 2       ? 1.0
                                         : -1.0,
                           i, i / 10 * 10 - (i == 240000 ? 50000 : 0)});
        QCOMPARE(points.size(), 100000);
        QVERIFY(points.memoryBytes() <= 100000 * 24 + 64);
        QCOMPARE(points.at(0).line, 150000);
        using Axis = CurvePoints::Axis;
        QCOMPARE(points.nearest(200122.6, Axis::Line).line, 200123);
        QCOMPARE(points.nearest(0, Axis::Line).line, 150000);
        QCOMPARE(points.nearest(1e9, Axis::Time).line, 249999);
        for (const Axis axis : {Axis::Line, Axis::Time}) {
            const double scale = axis == Axis::Time ? 0.001 : 1;
            const QVector<QPointF> shown = points.thinned(180000 * scale, 230000 * scale, 100, axis);
            QVERIFY(shown.size() <= 410);
            QVERIFY(shown.first().x() <= 180000 * scale && shown.last().x() >= 230000 * scale);
            double highest = 0;
            double lowest = 0;
            for (int i = 0; i < shown.size(); ++i) {
                highest = std::max(highest, shown.at(i).y());
                lowest = std::min(lowest, shown.at(i).y());
                QVERIFY(i == 0 || shown.at(i).x() >= shown.at(i - 1).x());
            }
            QVERIFY(highest == 9 && lowest == -9);
        }
        QCOMPARE(points.thinned(200000, 200003, 100, Axis::Line).size(), 5); // 199999 to 200003
    }

    // The line over a gap leads from the last point before it to the first one behind it.
    void keepsTheEndsOfAGap()
    {
        CurvePoints points;
        for (int burst = 0; burst < 2; ++burst)
            for (int i = 0; i < 1000 + 2000 * burst; ++i)
                points.append({i == 0 ? 7.0 : i == 999 ? 5.0 : i % 2 * 10.0, burst * 100000 + i, 0});
        const QVector<QPointF> shown = points.thinned(0, 102999, 100, CurvePoints::Axis::Line);
        QStringList all;
        for (const QPointF &point : shown)
            all += QString("%1:%2").arg(int(point.x())).arg(point.y());
        QCOMPARE(all.join(' '), QString("0:7 0:10 999:0 999:5 100000:7 100000:10 100939:0 100940:0 101969:10 "
                                        "101970:10 102998:0 102999:10"));
        for (int i = 0; i < 4; ++i) // few of a column are all shown
            points.append({double(i * i % 5), 1000000 + i, 0});
        const QVector<QPointF> more = points.thinned(0, 1000003, 100, CurvePoints::Axis::Line);
        const QVector<QPointF> last{{1000000, 0}, {1000001, 1}, {1000002, 4}, {1000003, 4}};
        QCOMPARE(more.mid(more.size() - 4), last);
    }

    void writesATable()
    {
        const auto ms = QDateTime({2026, 1, 31}, {12, 0, 59, 7}).toMSecsSinceEpoch();
        CurvePoints a;
        CurvePoints b;
        a.append({0.1, 1, ms});
        a.append({-3, 3, ms + 999});
        a.append({4, 3, ms}); // the same line, and the clock was set back
        b.append({1e-7, 3, ms + 999});
        CurveTable table({"温度", "x,\"y\""}, {a, b});
        QByteArray text;
        while (!table.advance(1))
            text += table.takePiece();
        text += table.takePiece();
        QCOMPARE(QString::fromUtf8(text), QString("\uFEFF时间,温度,\"x,\"\"y\"\"\"\r\n"
                                                  "2026-01-31 12:00:59.007,0.1,\r\n"
                                                  "2026-01-31 12:01:00.006,-3,1e-07\r\n"
                                                  "2026-01-31 12:01:00.006,4,\r\n"));
    }

private:
    QString read(NumberLines *lines, const QStringList &texts)
    {
        QStringList found;
        for (const QString &text : texts)
            for (const NumberLines::Value &value : lines->read(text, m_line++, 0))
                found += lines->names().at(value.curve) + '=' +
                         QString::number(value.value, 'g', QLocale::FloatingPointShortest);
        return found.join(' ');
    }

    qint64 m_line = 0;
};

QTEST_GUILESS_MAIN(TestCurves)
#include "test_curves.moc"
