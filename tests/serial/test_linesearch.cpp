// What is found in the lines of a session, against a search line by line.

#include "linesearch.h"
#include "linestore.h"

#include <QTemporaryDir>
#include <QTest>

Q_DECLARE_METATYPE(LineMatcher::Pattern)

class TestLineSearch : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_store = std::make_unique<LineStore>(m_folder->path());
    }

    void findsEachKindOfPattern_data()
    {
        QTest::addColumn<LineMatcher::Pattern>("pattern");
        QTest::addColumn<QString>("line");
        QTest::addColumn<QVector<int>>("begins");
        using P = LineMatcher::Pattern;
        const QString line = "Error: errors 错误 ERROR_1 a+b error";
        QTest::newRow("text") << P{"error"} << line << QVector<int>{0, 7, 17, 29};
        QTest::newRow("case") << P{"error", true} << line << QVector<int>{7, 29};
        QTest::newRow("word") << P{"error", false, true} << line << QVector<int>{0, 29};
        QTest::newRow("Chinese") << P{"错误"} << line << QVector<int>{14};
        QTest::newRow("no expression") << P{"a+b"} << line << QVector<int>{25};
        QTest::newRow("expression") << P{"e(r+)or\\b", false, false, true} << line << QVector<int>{0, 29};
        QTest::newRow("case, expression") << P{"E\\w+", true, false, true} << line << QVector<int>{0, 17};
        QTest::newRow("word, expression")
            << P{"err\\w", false, true, true} << "error errs" << QVector<int>{6};
        QTest::newRow("overlap") << P{"aa"} << "aaaa" << QVector<int>{0, 2};
        QTest::newRow("empty match") << P{"x*", false, false, true} << "axxb" << QVector<int>{1};
        QTest::newRow("not over line ends")
            << P{"a[^b]*", false, false, true} << "a\na" << QVector<int>{0, 2};
    }
    void findsEachKindOfPattern()
    {
        QFETCH(LineMatcher::Pattern, pattern);
        QFETCH(QString, line);
        QVector<LineMatcher::Range> found;
        QVERIFY(LineMatcher(pattern).find(line, &found));
        QVector<int> begins;
        for (const LineMatcher::Range &range : found)
            begins.append(range.begin);
        QTEST(begins, "begins");
    }

    void saysWhatIsWrong()
    {
        QVERIFY(LineMatcher({"a(b", false, false, false}).fault().isEmpty());
        QCOMPARE(LineMatcher({"a(b", false, false, true}).fault(),
                 QString("表达式有误，第3个字符处：缺少右括号“)”"));
        // Would take hours.
        m_store->append(QString(60, 'a') + "\n" + QString(60, 'a') + "\n", 0);
        LineSearch search(*m_store);
        search.start(LineMatcher({"(a+)+$x", false, false, true}));
        for (int i = 0; i < 10; ++i)
            search.step();
        QCOMPARE(search.count(), qint64(0));
    }

    // Over many pieces, lines longer than one, and while lines are added.
    void countsAndFindsAgain()
    {
        LineSearch search(*m_store);
        QVector<LineSearch::Match> expected;
        quint32 seed = 3;
        search.start(LineMatcher({"温度7"}));
        QVERIFY(!search.step());
        for (qint64 line = 0; line < 30000; ++line) {
            seed = seed * 1664525U + 1013904223U;
            QString text = QString(int(seed >> 27), 'x') + QString::number(seed);
            if (line == 9000)
                text += QString(700 * 1000, 'y');
            if (seed % 7 == 0) {
                expected.append({{line, text.size()}, 3});
                text += "温度7";
            }
            m_store->append(text + (line == 29999 ? "" : "\n"), 0);
            if (line % 5000 == 0)
                search.step();
        }
        while (search.step()) {
        }
        QVERIFY(!search.hasMore());
        QCOMPARE(search.count(), qint64(expected.size()));
        for (int i = 0; i < expected.size(); i += 97) {
            const LineSearch::Match found = search.at(i).value_or(LineSearch::Match());
            QCOMPARE(found.place.line, expected.at(i).place.line);
            QCOMPARE(found.place.column, expected.at(i).place.column);
            QCOMPARE(search.indexFrom(found.place), qint64(i));
            QCOMPARE(search.indexFrom({found.place.line, found.place.column + 1}), qint64(i + 1));
        }
        QVERIFY(!search.at(search.count()));
        const LineSet &lines = search.lines();
        QCOMPARE(lines.count(), qint64(expected.size()));
        QVERIFY(lines.contains(expected.at(1).place.line) &&
                !lines.contains(expected.at(1).place.line + 30000));
        for (int i = 0; i < expected.size(); i += 89) {
            QCOMPARE(lines.at(i), expected.at(i).place.line);
            QCOMPARE(lines.countBelow(lines.at(i)), qint64(i));
            QVERIFY(!lines.isAnyIn(lines.at(i) + 1, i + 1 < lines.count() ? lines.at(i + 1) : 30000));
        }

        m_store->clear();
        m_store->append("温度7 温度7", 0);
        search.step();
        QCOMPARE(search.count(), qint64(2));
    }

    // Pieces end with lines also where they were searched bit by bit.
    void cutsNoLineWhileItGrows()
    {
        LineSearch search(*m_store);
        search.start(LineMatcher({"abcdefghij"}));
        const int lines = 12000;
        for (int line = 0; line < lines; ++line) {
            m_store->append(QString(line % 50, 'x') + "abcdefghijabcdefghij\n", 0);
            if (line % 3 == 0)
                search.step();
        }
        while (search.step()) {
        }
        QCOMPARE(search.count(), qint64(2 * lines));
        for (int line = 0; line < lines; line += 97) {
            const LineSearch::Match found = search.at(2 * line + 1).value_or(LineSearch::Match());
            QCOMPARE(found.place.line, qint64(line));
            QCOMPARE(found.place.column, line % 50 + 10);
        }
        // A pasted pattern may begin with a line end.
        search.start(LineMatcher({"\nab"}));
        while (search.step()) {
        }
        QVERIFY(!search.hasMore());
    }

    // An expression sees a window of such a line at a time.
    void searchesLongLines()
    {
        const auto find = [](const QString &expression, const QString &line) {
            QVector<LineMatcher::Range> found;
            const bool isKnown = LineMatcher({expression, true, false, true}).find(line, &found);
            QString all = isKnown ? "" : "too slow ";
            for (const LineMatcher::Range &range : found)
                all += QString("%1+%2 ").arg(range.begin).arg(range.length);
            return all.trimmed();
        };
        QString line(20000, ' ');
        for (const int at : {0, 4094, 4095, 16000, 18000, 19997})
            line.replace(at, 3, "a-b");
        QCOMPARE(find("a-b", line), QString("0+3 4095+3 16000+3 18000+3 19997+3"));
        QCOMPARE(find("^a-b", line), QString("0+3"));
        QCOMPARE(find("a-b$", line), QString("19997+3"));
        QCOMPARE(find("(?<=^| )a(?! )", line), QString("0+1 4094+1 16000+1 18000+1 19997+1"));
        QCOMPARE(find(" $|aa", line), QString("4094+2"));
        QCOMPARE(find("b *a", line), QString("2+4093 16002+1999 18002+1996"));
        // A character of two units stands across the end of a window.
        QCOMPARE(find("[^x]+", QString(4095, 'x') + QString::fromUtf8("😀x")), QString("4095+2"));
        QCOMPARE(find("[^x]", QString("x") + QChar(0xD83D) + "x"), QString("1+1"));
        // The step limit of one place is never reached.
        QCOMPARE(find("z(\\w|-)*[!?]", QString(40000, 'z')), QString("too slow"));
        QCOMPARE(find(".", QString(250000, 'z')).count('+'), 250000);
    }

    // What is found in bytes is what is found in each line, step by step as lines are added.
    void agreesWithEachLine_data()
    {
        QTest::addColumn<LineMatcher::Pattern>("pattern");
        for (const char *text : {"a", "aB", "BA", "温", "度a", "é", "É温", "b.a", "aba"})
            for (const bool caseSensitive : {false, true})
                for (const bool wholeWord : {false, true})
                    QTest::addRow("%s %d %d", text, caseSensitive, wholeWord)
                        << LineMatcher::Pattern{QString::fromUtf8(text), caseSensitive, wholeWord, false};
    }

    void agreesWithEachLine()
    {
        QFETCH(LineMatcher::Pattern, pattern);
        const QString units = QStringLiteral("aAbB.温度éÉ \n\n");
        const LineMatcher matcher(pattern);
        LineSearch search(*m_store);
        search.start(matcher);
        QString all;
        quint32 seed = 5;
        for (int i = 0; i < 5000; ++i) {
            seed = seed * 1664525U + 1013904223U;
            const QChar unit = units.at(int((seed >> 16) % quint32(units.size())));
            all += unit;
            m_store->append(unit, 0);
            if (seed % 11 == 0)
                while (search.step()) {
                }
        }
        while (search.step()) {
        }
        qint64 count = 0;
        const QStringList lines = all.split('\n');
        for (int line = 0; line < lines.size(); ++line) {
            QVector<LineMatcher::Range> found;
            matcher.find(lines.at(line), &found);
            QCOMPARE(search.lines().contains(line), !found.isEmpty());
            for (const LineMatcher::Range &range : qAsConst(found)) {
                const LineSearch::Match match = search.at(count++).value_or(LineSearch::Match());
                QCOMPARE(match.place.line, qint64(line));
                QCOMPARE(match.place.column, range.begin);
            }
        }
        QCOMPARE(search.count(), count);
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<LineStore> m_store;
};

QTEST_GUILESS_MAIN(TestLineSearch)
#include "test_linesearch.moc"
