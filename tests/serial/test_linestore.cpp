// Lines of a session by their number: text, time and origin as they came.

#include "linestore.h"
#include "linestyles.h"

#include <QTemporaryDir>
#include <QTest>

class TestLineStore : public QObject
{
    Q_OBJECT

private slots:
    // In pieces of any size, with empty lines, long ones and both origins.
    void findsEveryLine()
    {
        QTemporaryDir folder;
        LineStore store(folder.path());
        QVector<LineStore::Line> expected;
        qint64 nowMs = 1'700'000'000'000;
        quint32 seed = 7;
        QVERIFY(store.lines(0, 5).isEmpty());
        for (int i = 0; i < 60000; ++i) {
            seed = seed * 1664525U + 1013904223U;
            nowMs += seed >> 28;
            const auto origin = seed % 11 == 0 ? LineStore::Origin::Sent : LineStore::Origin::Received;
            const QString text = seed % 3 == 0      ? QString()
                                 : seed % 4999 == 0 ? QString(70000, QChar(u'温'))
                                                    : QStringLiteral("第%1行 %2").arg(i).arg(seed);
            const int cut = text.isEmpty() ? 0 : int(seed % uint(text.size()));
            store.append(text.left(cut), nowMs, origin);
            store.append(text.mid(cut) + '\n', cut > 0 ? nowMs + 900 : nowMs, origin);
            expected.append({text, nowMs, origin, false});
        }
        QCOMPARE(store.size(), qint64(expected.size()));
        for (const int first : {0, 1, 1023, 1024, 30001, 59990}) {
            const auto found = store.lines(first, 100, 1 << 20);
            QCOMPARE(found.size(), qMin(100, expected.size() - first));
            for (int k = 0; k < found.size(); ++k) {
                const LineStore::Line &line = expected.at(first + k);
                QCOMPARE(found.at(k).text, line.text);
                QCOMPARE(found.at(k).arrivalMs, line.arrivalMs);
                QCOMPARE(found.at(k).origin, line.origin);
                QVERIFY(!found.at(k).isCut);
            }
        }
        QVERIFY(store.memoryBytes() < 32 * 1024);
        store.clear();
        QCOMPARE(store.size(), qint64(0));
        store.append("again\n", 5);
        QCOMPARE(store.lines(0, 1).at(0).arrivalMs, qint64(5));
    }

    void showsAnUnfinishedLineAndCutsLongOnes()
    {
        QTemporaryDir folder;
        LineStore store(folder.path());
        store.append("begin", 10);
        store.append(" end", 20);
        QCOMPARE(store.size(), qint64(1));
        QCOMPARE(store.lines(0, 9).at(0).text, QString("begin end"));
        store.append("sent", 15, LineStore::Origin::Sent); // a line of its own, no earlier
        QCOMPARE(store.size(), qint64(2));
        QCOMPARE(store.lines(1, 1).at(0).text, QString("sent"));
        QCOMPARE(store.lines(1, 1).at(0).arrivalMs, qint64(15));
        store.append("\n" + QString(1000, QChar(u'温')) + "\nlast", 30);
        const auto lines = store.lines(2, 3, 100);
        QCOMPARE(lines.size(), 3);
        QVERIFY(lines.at(0).text.isEmpty() && !lines.at(0).isCut);
        QCOMPARE(lines.at(1).text, QString(33, QChar(u'温')));
        QVERIFY(lines.at(1).isCut);
        QCOMPARE(lines.at(2).text, QString("last"));
        const int size = int(store.size());
        for (int i = 0; i < 3; ++i) // each ends a block
            store.append("\nx" + QString(200000, 'y') + "\nnext", 40 + i);
        const auto longOnes = store.lines(size - 1, 9, 5);
        QCOMPARE(longOnes.size(), 7);
        for (int i = 1; i < 7; i += 2) {
            QVERIFY(longOnes.at(i).text == "xyyy" && longOnes.at(i).isCut);
            QVERIFY(longOnes.at(i + 1).text == "next" && longOnes.at(i + 1).arrivalMs == 40 + i / 2);
        }
    }

    // A line that loses all of its text keeps its time.
    void keepsStylesAndTimes()
    {
        QTemporaryDir folder;
        LineStore store(folder.path());
        store.append("ab", 10);
        store.chop("ab");
        QCOMPARE(store.size(), qint64(0));
        store.append("c\n", 20);
        QCOMPARE(store.lines(0, 1).at(0).arrivalMs, qint64(10));
        store.append(QString(70000, 'y') + "\nz", 30);
        store.chop("z");
        QCOMPARE(store.tail(3, 9), QString("yy\n"));
        LineStyles styles(folder.path());
        QMap<qint64, LineStyles::Runs> expected;
        const auto areAlike = [](const LineStyles::Runs &a, const LineStyles::Runs &b) {
            return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                              [](const StyledRun &x, const StyledRun &y) {
                                  return x.begin == y.begin && x.length == y.length && x.style == y.style;
                              });
        };
        quint32 seed = 3;
        for (int turn = 0; turn < 2; ++turn) {
            for (qint64 i = 0, line = 1; i < 4000; ++i) {
                seed = seed * 1664525U + 1013904223U;
                line += seed >> 30;
                LineStyles::Runs &runs = expected[line];
                TextStyle style;
                style.text = int(seed >> 8 & 7) - 1;
                style.setFlags(int(seed >> 12 & 15));
                const int end = runs.isEmpty() ? 0 : runs.last().begin + runs.last().length;
                const StyledRun run{end + int(seed >> 20 & 3) + 1, 1 + int(seed >> 16 & 7), style};
                runs.append(run);
                styles.add(line, run);
                if ((seed >> 24 & 3) == 0) {
                    styles.chop(line, run.begin + 1);
                    runs.last().length = 1;
                }
                const qint64 some = qint64(seed) % (line + 3);
                QVERIFY(i % 9 != 0 || areAlike(styles.of(some), expected.value(some)));
            }
            styles.clear();
            expected.clear();
            QVERIFY(styles.isEmpty() && styles.of(1).isEmpty());
        }
    }
};

QTEST_GUILESS_MAIN(TestLineStore)
#include "test_linestore.moc"
