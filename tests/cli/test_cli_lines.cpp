// What a line is for "expect" and for "monitor".

#include "expectedline.h"
#include "linetest.h"
#include "monitortext.h"

#include <QElapsedTimer>
#include <QtTest>

namespace {

LineMatcher::Pattern expression(const char *text)
{
    LineMatcher::Pattern pattern;
    pattern.text = QString::fromUtf8(text);
    pattern.caseSensitive = true;
    pattern.isExpression = true;
    return pattern;
}

} // namespace

class TestCliLines : public QObject
{
    Q_OBJECT

private slots:
    void countsWhatIsTooHard()
    {
        LineTest test(expression("(a+)+$x"));
        for (const char *end : {"b", "bx"})
            QVERIFY(!test.matches(QString(60, 'a') + end));
        QCOMPARE(test.unjudgedLines(), 1);
    }

    void findsALine_data()
    {
        QTest::addColumn<QByteArray>("pattern");
        QTest::addColumn<QByteArray>("received");
        QTest::addColumn<QByteArray>("line"); // "-": none
        const QByteArray endless(3 * ExpectedLine::maxOpenBytes + 7, 'x');
        QTest::newRow("line end") << QByteArray("ok$") << QByteArray("not ok\r\r\nok\n")
                                  << QByteArray("not ok");
        QTest::newRow("empty") << QByteArray("^$") << QByteArray("a\n\r\n") << QByteArray();
        QTest::newRow("no line") << QByteArray("ok") << QByteArray("o\nk") << QByteArray("-");
        QTest::newRow("NUL") << QByteArray("v=\\d") << QByteArray("a\0v=1\n", 6) << QByteArray("a\0v=1", 5);
        QTest::newRow("no UTF-8") << QByteArray("度 \\d") << QByteArray("\xB6\xFF度 1\n")
                                  << QByteArray("\xB6\xFF度 1");
        QTest::newRow("prompt") << QByteArray("^> $") << QByteArray("text\n> ") << QByteArray("> ");
        QTest::newRow("endless") << QByteArray("xyx") << endless + 'y' + endless << QByteArray("...");
        QTest::newRow("behind endless") << QByteArray("^ok$") << endless + "\nok\n" << QByteArray("ok");
        QTest::newRow("without end") << QByteArray("^(a+)+$") << QByteArray(3000, 'a') + "b\n"
                                     << QByteArray("-");
    }

    void findsALine()
    {
        QFETCH(QByteArray, pattern);
        QFETCH(QByteArray, received);
        QFETCH(QByteArray, line);
        for (const int pieceSize : {received.size(), 4095, 1}) {
            qint64 us = 0;
            ExpectedLine expected(expression(pattern), TextCodec::Utf8, [&us] { return us += 1000; });
            std::optional<QByteArray> found;
            for (int at = 0; at < received.size() && !found; at += pieceSize)
                found = expected.add(received.mid(at, pieceSize));
            if (!found)
                found = expected.openLine();
            if (line == "...")
                QVERIFY(found && found->size() <= ExpectedLine::maxOpenBytes);
            else
                QCOMPARE(found.value_or("-"), line);
        }
    }

    void showsLines_data()
    {
        QTest::addColumn<QByteArray>("options"); // h hexadecimal, s stamps, g GB18030, f filter "b$"
        QTest::addColumn<QByteArrayList>("received");
        QTest::addColumn<QByteArray>("shown"); // T: a time
        QTest::newRow("hex") << QByteArray("h") << QByteArrayList{"\x01", "\xAB\n"}
                             << QByteArray("01 AB 0A\n");
        QTest::newRow("packets") << QByteArray("hs") << QByteArrayList{QByteArray(1025, 'A')}
                                 << "T41" + QByteArray(" 41").repeated(1023) + "\nT41\n";
        QTest::newRow("stamps") << QByteArray("s") << QByteArrayList{"a", "b\n\nc"}
                                << QByteArray("Tab\nT\nTc");
        QTest::newRow("cut characters")
            << QByteArray("g") << QByteArrayList{"\xCE", "\xC2"} << QByteArray("温");
        QTest::newRow("filter") << QByteArray("fs") << QByteArrayList{"a", "b\r\nba\nb"}
                                << QByteArray("Tab\r\nTb\n");
        QTest::newRow("endless") << QByteArray("f")
                                 << QByteArrayList{QByteArray(MonitorText::maxLineBytes - 1, 'x') + "bx"}
                                 << QByteArray(MonitorText::maxLineBytes - 1, 'x') + "b\n";
        QTest::newRow("hex filter") << QByteArray("hf") << QByteArrayList{"a"} << QByteArray();
    }

    void showsLines()
    {
        QFETCH(QByteArray, options);
        QFETCH(QByteArrayList, received);
        QFETCH(QByteArray, shown);
        MonitorText::Options given;
        given.isHex = options.contains('h');
        given.hasStamps = options.contains('s');
        given.codecIndex = options.contains('g') ? TextCodec::Gb18030 : TextCodec::Utf8;
        if (options.contains('f'))
            given.filter = expression("b$");
        const qint64 ms = QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5, 6)).toMSecsSinceEpoch();
        MonitorText text(given);
        QByteArray out;
        for (const QByteArray &bytes : qAsConst(received))
            out += text.add(bytes, ms);
        out += text.endLine();
        QCOMPARE(out, shown.replace("T", "[03:04:05.006] "));
    }
};

QTEST_GUILESS_MAIN(TestCliLines)
#include "test_cli_lines.moc"
