// Which colors rules give to the lines of logs, and their file.

#include "rulecoloring.h"

#include <QTest>

namespace {

using Span = RuleColoring::Span;

QString described(const QVector<Span> &spans)
{
    QString text;
    for (const Span &span : spans)
        text += QString("%1+%2 %3, ").arg(span.begin).arg(span.length).arg(span.color);
    return text;
}

} // namespace

class TestColorRules : public QObject
{
    Q_OBJECT

private slots:
    void knowsCommonLogs()
    {
        const ColorRules rules = commonColorRules();
        RuleColoring coloring;
        coloring.setRules(rules);
        const quint32 none = 1;
        const quint32 fatal = rules.at(0).color;
        const quint32 error = rules.at(1).color;
        const quint32 warning = rules.at(2).color;
        const quint32 information = rules.at(3).color;
        const quint32 debug = rules.at(4).color;
        const std::pair<const char *, quint32> rows[] = {
            {"E (1234) wifi: connect failed", error},
            {"\x1b[0;33mW (12:30:45.678) i2c: slow\x1b[0m", warning},
            {"I (5) main: no ERROR so far", information},
            {"V (5) spi: clock", debug},
            {"[00:00:01.234,000] <err> sensor: no answer", error},
            {"[00:00:01.234,000] <wrn> sensor: late", warning},
            {"[00:00:01.234,000] <dbg> sensor.read: 5", debug},
            {"[E/drv.i2c] no ack", error},
            {"[12] [W] low battery", warning},
            {"01-02 00:00:03 I/main tshell: up", information},
            {"2024-01-02 ERROR disk full", error},
            {"main.c:12:3: warning: unused", warning},
            {"[INFO] ready", information},
            {"DEBUG x=5", debug},
            {"E (77) main: assert failed", fatal},
            {"***ERROR CODE: Kernel panic", fatal},
            {"温度正常 0 errors, MODE (5), PIE (3), [E5]", none},
            {"TERROR WARNED INFORM", none},
        };
        for (const auto &[line, color] : rows) {
            const int rule = coloring.lineRuleOf(QString(line));
            const auto spans = coloring.spans({QString(line)}, rule);
            QVERIFY2((spans.isEmpty() ? none : spans.first().color) == color, line);
        }
    }

    void firstRuleWins()
    {
        RuleColoring coloring;
        coloring.setRules({{{"off"}, 1, true, false},
                           {{"("}, 2, false, true},
                           {{"(", false, false, true}, 3, true, true}, // faulty
                           {{"b+", false, false, true}, 4, false, true},
                           {{"c"}, 5, true, true},
                           {{"abbc"}, 6, false, true}});
        const auto colors = [&](const QString &line) {
            return described(coloring.spans({line}, coloring.lineRuleOf(line)));
        };
        QCOMPARE(colors("off abb"), QString("5+2 4, "));
        QCOMPARE(colors("abbc("), QString("0+1 5, 1+2 4, 3+1 5, 4+1 2, "));
        // Of a line that is cut, also where the match for the line is elsewhere.
        coloring.setRules({{{"^x|y$", false, false, true}, 7, false, true}, {{"far"}, 8, true, true}});
        QCOMPARE(described(coloring.spans({"x y", false, false}, -1)), QString());
        QCOMPARE(described(coloring.spans({"x y", true, false}, 1)), QString("0+1 7, 1+2 8, "));
    }

    // Not on one line alone, and not again with other rules beside it.
    void givesUp()
    {
        const ColorRule hard{{"(a+)+$", false, false, true}, 1, true, true};
        RuleColoring coloring;
        coloring.setRules({hard, {{"a"}, 2, true, true}});
        QCOMPARE(coloring.lineRuleOf("aa"), 0);
        for (int i = 0; i < RuleColoring::maxHardTexts; ++i) {
            QVERIFY(!coloring.hasGivenUp(hard.pattern));
            QCOMPARE(coloring.lineRuleOf(QString(60, 'a') + '!'), 1);
        }
        QCOMPARE(coloring.lineRuleOf("aa"), 1);
        QCOMPARE(coloring.takeGivenUp(), QStringList("(a+)+$"));
        coloring.setRules({hard});
        QVERIFY(coloring.isEmpty() && coloring.hasGivenUp(hard.pattern));
    }

    void keepsRulesInAFile()
    {
        const ColorRules rules{{{"错误\"\\[", true, true, true}, 0x00000F, false, false}, {{"x"}, 0xFFFFFF}};
        QString reason;
        QVERIFY(ColorRuleFile::read(ColorRuleFile::write(rules), &reason) == rules);
        const QByteArray file = "{'format':'korvex-color-rules','version':1,'rules':[{'pattern':'a',%1}]}";
        const auto read = [&](const char *rule) {
            return ColorRuleFile::read(QByteArray(file).replace("%1", rule).replace('\'', '"'), &reason);
        };
        QVERIFY(read("'color':'#102030'") == ColorRules({{{"a"}, 0x102030, false, true}}));
        for (const char *rule :
             {"'color':'#10203'", "'color':'#+10203'", "'color':1", "'case':true", "'color':'#102030','on':1",
              "'color':'#102030','pattern':''", "'color':'#102030','pattern':'a\\nb'"})
            QVERIFY2(!read(rule) && reason.startsWith("第1条规则"), rule);
        const QByteArray many = ColorRuleFile::write(ColorRules(ColorRuleFile::maxRules + 1, rules.first()));
        const QByteArray newer =
            QByteArray(file).replace(":1", ":2").replace("%1", "'color':'#102030'").replace('\'', '"');
        for (const QByteArray &bad : {many, newer, many.left(500), QByteArray("[]"), QByteArray()})
            QVERIFY2(!ColorRuleFile::read(bad, &reason) && !reason.isEmpty(), bad.left(80));
    }
};

QTEST_MAIN(TestColorRules)
#include "test_colorrules.moc"
