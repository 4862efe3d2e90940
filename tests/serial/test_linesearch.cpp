// What is found in the lines of a session, against a search line by line.

#include "linefilter.h"
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
        m_store->append(QString(60, 'a') + "bx\n", 0);
        LineSearch search(*m_store);
        search.start(LineMatcher({"(a+)+$x", false, false, true}));
        for (int pieces = 1; !search.hasGivenUp(); ++pieces) {
            search.step();
            QCOMPARE(search.hasGivenUp(), pieces == LineSearch::maxHardPieces);
            m_store->append(QString(60, 'a') + "bx\n", 0);
        }
        QVERIFY(search.count() == 0 && search.indexFrom({0, 0}) == 0);
        search.start(LineMatcher({"x$", false, false, true}));
        while (search.step()) {
        }
        QCOMPARE(search.count(), m_store->size());
    }

    // Over many pieces, lines longer than one, while lines grow and shrink.
    void followsWhatIsChopped()
    {
        const QStringList texts{"a", "aB", "BA", "温", "度a", "é", "É温", "b.a", "aba"};
        const QStringList parts{"\n", "ab温", "aB.a ", "éÉ温 ", "度aba", " BA\n", "b.a"};
        QVector<LineMatcher> matchers(2, LineMatcher({"a+b?", false, false, true}));
        QVector<LineSearch> searches(2, LineSearch(*m_store));
        QString all;
        quint32 seed = 11;
        const auto random = [&seed](int end) {
            seed = seed * 1664525U + 1013904223U;
            return int((seed >> 8) % quint32(end));
        };
        for (int i = 0; i < 160; ++i) {
            if (i % 8 == 0) {
                matchers[0] =
                    LineMatcher({texts.at(random(texts.size())), random(2) == 0, random(2) == 0, false});
                matchers[1] = LineMatcher({"a+b?", random(2) == 0, false, true});
                for (int k = 0; k < 2; ++k)
                    searches[k].start(matchers.at(k));
            }
            if (i == 80) {
                all.clear();
                m_store->clear();
            }
            QString text = QString(random(16) == 0 ? 250 * 1000 : random(30), random(2) == 0 ? 'x' : u'度');
            if (random(9) == 0)
                text = QString("x\n").repeated(250);
            for (int count = random(9); count > 0; --count)
                text.insert(random(text.size() + 1), parts.at(random(parts.size())));
            all += text;
            m_store->append(text, 0);
            if (random(2) == 0) {
                const QString end = all.right(random(all.size() - all.lastIndexOf('\n')));
                all.chop(end.size());
                if (!end.isEmpty())
                    m_store->chop(end);
            }
            for (LineSearch &search : searches)
                for (int steps = random(5); steps > 0; --steps)
                    search.step();
            if (i % 8 == 7)
                compareWithEachLine(matchers, searches, all);
            if (QTest::currentTestFailed())
                return;
        }
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

private:
    void compareWithEachLine(const QVector<LineMatcher> &matchers, QVector<LineSearch> &searches,
                             const QString &all)
    {
        const QStringList lines = all.split('\n');
        const int last = lines.size() - 1;
        QCOMPARE(m_store->completeLines(), qint64(last));
        QCOMPARE(m_store->extract(last / 2, last + 1, 1 << 30).text, lines.mid(last / 2).join('\n'));
        QCOMPARE(m_store->extract(last / 2, 2, 1 << 30).isEnd, last + 1 - last / 2 <= 2);
        QCOMPARE(m_store->extractBefore(last, 3, 1 << 30).text + lines.last(),
                 lines.mid(qMax(0, last - 3)).join('\n'));
        const QString end = lines.mid(qMax(0, last - 2)).join('\n');
        QVERIFY(end.endsWith(m_store->tail(40, 3)) && m_store->tail(40, 3).endsWith(lines.last().right(40)));
        for (int i = 0; i < 2; ++i) {
            LineSearch &search = searches[i];
            while (search.step()) {
            }
            QVERIFY(!search.at(search.count()));
            QSet<int> matching;
            qint64 count = 0;
            for (int line = 0; line <= last; ++line) {
                QVector<LineMatcher::Range> found;
                matchers.at(i).find(lines.at(line), &found);
                QCOMPARE(search.lines().countBelow(line), qint64(matching.size()));
                QCOMPARE(search.lines().isAnyIn(line, line + 1), !found.isEmpty());
                if (!found.isEmpty())
                    matching += line;
                for (const LineMatcher::Range &range : qAsConst(found)) {
                    if (count++ % 5 != 0)
                        continue;
                    const LineSearch::Match match = search.at(count - 1).value_or(LineSearch::Match());
                    QVERIFY(match.place.line == line && match.place.column == range.begin);
                    QCOMPARE(search.indexFrom(match.place), count - 1);
                    QCOMPARE(search.indexFrom({line, range.begin + 1}), count);
                }
            }
            QCOMPARE(search.count(), count);
            LineFilter filter(*m_store, search);
            for (const LineFilter::Options options : {LineFilter::Options{false, 0}, {true, 0}, {false, 2}}) {
                filter.start(options);
                while (filter.update()) {
                }
                QStringList shown;
                for (int line = 0; line < last; ++line) {
                    bool isNear = false;
                    for (int at = line - options.context; at <= line + options.context; ++at)
                        isNear =
                            isNear || (at >= 0 && at < last && matching.contains(at) != options.isInverted);
                    if (isNear)
                        shown += lines.at(line);
                }
                QCOMPARE(filter.extract(0, last + 1, 1 << 30).text, shown.join('\n'));
                QCOMPARE(filter.extractBefore(filter.lines().count(), 2).text.count('\n'),
                         qMin(2, shown.size()));
            }
        }
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<LineStore> m_store;
};

QTEST_GUILESS_MAIN(TestLineSearch)
#include "test_linesearch.moc"
