// The engine of automatic answers: what rules find in a stream, their file, the limits.

#include "answermatcher.h"
#include "answerpacer.h"
#include "answerstore.h"
#include "echoguard.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

namespace {

AnswerRule rule(AnswerRule::Kind kind, const char *pattern, const char *answer = "$0")
{
    AnswerRule made;
    made.id = QString::fromUtf8(pattern);
    made.kind = kind;
    made.pattern = QString::fromUtf8(pattern);
    made.answer = QString::fromUtf8(answer);
    return made;
}

AnswerRule named(const char *id, const char *pattern)
{
    AnswerRule made = rule(AnswerRule::Text, pattern);
    made.id = QString::fromUtf8(id);
    return made;
}

// All answers, with "|" between them.
QByteArray answersOf(const AnswerMatcher::Hits &hits)
{
    QByteArrayList answers;
    for (const AnswerMatcher::Hit &hit : hits)
        answers.append(hit.answer);
    return answers.join('|');
}

QString ids(const AnswerRules &rules)
{
    QStringList all;
    for (const AnswerRule &one : rules)
        all.append(one.id + QLatin1Char('=') + one.pattern);
    return all.join(QLatin1Char(' '));
}

} // namespace

Q_DECLARE_METATYPE(AnswerRule)

class TestAnswers : public QObject
{
    Q_OBJECT

private slots:
    // The same answers however the bytes are cut.
    void answersWhatMatches_data()
    {
        QTest::addColumn<AnswerRule>("rule");
        QTest::addColumn<int>("codec");
        QTest::addColumn<QByteArray>("received");
        QTest::addColumn<QByteArray>("answers");
        const auto row = [](const char *name, const AnswerRule &rule, const QByteArray &received,
                            const QByteArray &answers, int codec = TextCodec::Utf8) {
            QTest::newRow(name) << rule << codec << received << answers;
        };
        const auto text = AnswerRule::Text;
        const auto hex = AnswerRule::Hex;
        const auto expression = AnswerRule::Expression;
        row("text", rule(text, "AT\\r\\n", "\\x4fK\\r\\n\\\\$$1$"), "xAT\r\nAT\nAT\r\n",
            "OK\r\n\\$1$|OK\r\n\\$1$");
        row("dollar signs", rule(text, "$1", "$$$0$"), "x$1", "$$1$");
        row("no byte is matched twice", rule(text, "aa"), "aaaaa", "aa|aa");
        row("zero bytes", rule(text, "a\\0b"), QByteArray("a\0b", 3), QByteArray("a\0b", 3));
        row("Chinese", rule(text, "\u4f60\u597d", "\u597d"), "\xE4\xBD\xA0\xE5\xA5\xBD", "\xE5\xA5\xBD");
        row("GB18030", rule(text, "\u4f60", "\u597d"), "\xC4\xE3", "\xBA\xC3", TextCodec::Gb18030);
        // 0x81 0x4F is one character.
        row("not the half of a character", rule(text, "OK"), "\x81OK OK", "OK", TextCodec::Gb18030);
        row("bytes behind a half", rule(text, "\\x4FK"), "\x81OK", "OK", TextCodec::Gb18030);
        AnswerRule frame = rule(hex, "AA (?? ) 5? (?? ?? )");
        frame.answer = QStringLiteral("0103 $2 $1$0");
        frame.isHexAnswer = true;
        row("wild cards", frame, "\xAA\xAA\x01\x5F\x10\x20\xAA\x01\x4F\x01\x02",
            "\x01\x03\x10\x20\x01\xAA\x01\x5F\x10\x20");
        AnswerRule modbus = rule(hex, "01", "010300000001");
        modbus.isHexAnswer = true;
        modbus.checksum = QStringLiteral("crc-16/modbus");
        modbus.lineEnd = AnswerRule::Lf;
        row("checksum and line end", modbus, "\x01", QByteArray("\x01\x03\0\0\0\x01\x84\x0A\n", 9));
        row("expression", rule(expression, "temp=(\\d+)(C)?", "<$1$2>"), "temp=25C temp=1 x", "<25C>|<1>");
        row("line by line", rule(expression, "^ok$"), "ok\r\nnok\rok\nok ok\n", "ok|ok");
        row("looking behind", rule(expression, "(?<=\u6e29)\\d"),
            "\xE6\xB8\xA9"
            "1 2",
            "1");
        row("empty matches", rule(expression, "x*"), "axxb", "xx");
    }

    void answersWhatMatches()
    {
        QFETCH(AnswerRule, rule);
        QFETCH(int, codec);
        QFETCH(QByteArray, received);
        QCOMPARE(AnswerMatcher::faultOf(rule, codec), QString());
        for (int size = 1; size <= received.size(); ++size) {
            AnswerMatcher matcher;
            matcher.setRules({rule}, codec);
            AnswerMatcher::Hits hits;
            for (int at = 0; at < received.size(); at += size)
                hits += matcher.add(7, received.mid(at, size));
            hits += matcher.endBurst(7);
            QTEST(answersOf(hits), "answers");
        }
    }

    void reportsFaults_data()
    {
        QTest::addColumn<AnswerRule>("rule");
        QTest::newRow("no pattern") << rule(AnswerRule::Text, "");
        QTest::newRow("unknown escape") << rule(AnswerRule::Text, "C:\\q");
        QTest::newRow("half an escape") << rule(AnswerRule::Text, "a", "\\x1");
        QTest::newRow("half a byte") << rule(AnswerRule::Hex, "AA B");
        QTest::newRow("only wild cards") << rule(AnswerRule::Hex, "?? 1?");
        QTest::newRow("open group") << rule(AnswerRule::Hex, "(AA");
        QTest::newRow("expression") << rule(AnswerRule::Expression, "(a");
        QTest::newRow("no such group") << rule(AnswerRule::Expression, "(a)", "$2");
    }

    void reportsFaults()
    {
        QFETCH(AnswerRule, rule);
        QVERIFY(!AnswerMatcher::faultOf(rule, TextCodec::Utf8).isEmpty());
        AnswerMatcher matcher;
        matcher.setRules({rule}, TextCodec::Utf8);
        QVERIFY(matcher.isEmpty());
    }

    // Rules and sources don't know of each other; answers are in the order of the stream.
    void keepsSourcesApart()
    {
        AnswerMatcher matcher;
        AnswerRule off = rule(AnswerRule::Text, "a", "off");
        off.isOn = false;
        matcher.setRules({off, rule(AnswerRule::Expression, "b\\r", "2"), rule(AnswerRule::Text, "ab", "3"),
                          rule(AnswerRule::Text, "a", "1")},
                         TextCodec::Utf8);
        QCOMPARE(answersOf(matcher.add(1, "xa")), QByteArray("1"));
        QCOMPARE(answersOf(matcher.add(2, "b\r")), QByteArray("2"));
        QCOMPARE(answersOf(matcher.add(1, "b\rab\ra")), QByteArray("3|2|1|3|2|1"));
        matcher.setRules({rule(AnswerRule::Text, "ab")}, TextCodec::Utf8);
        QVERIFY(matcher.add(1, "b").isEmpty()); // of "ab", the rest came before the rule
    }

    // A match that could become longer waits for more, for silence, or for the limit.
    void waitsForTheEndOfAMatch()
    {
        AnswerMatcher matcher;
        matcher.setRules({rule(AnswerRule::Expression, "v=\\d+", "$0")}, TextCodec::Utf8);
        QVERIFY(matcher.add(1, "v=1").isEmpty());
        QVERIFY(matcher.isWaiting(1));
        QCOMPARE(answersOf(matcher.endBurst(1)), QByteArray("v=1"));
        QVERIFY(matcher.add(1, " v=").isEmpty());
        QVERIFY(matcher.endBurst(1).isEmpty()); // a pause in the middle
        QCOMPARE(answersOf(matcher.add(1, "23;")), QByteArray("v=23"));
        QVERIFY(!matcher.isWaiting(1));
        int hits = 0;
        for (int i = 0; i < 100; ++i)
            hits += matcher.add(1, (i == 0 ? "v=" : "") + QByteArray(1000, '7')).size();
        QCOMPARE(hits, 1); // the digits behind it are none of it
    }

    void keepsAWindowOfAnEndlessStream()
    {
        AnswerMatcher matcher;
        matcher.setRules({rule(AnswerRule::Expression, "B[^E]*E", "1"), rule(AnswerRule::Text, "END", "2")},
                         TextCodec::Utf8);
        const QByteArray filling(1000, '.');
        for (int i = 0; i < 1000; ++i)
            QVERIFY(matcher.add(1, i % 5 == 0 ? "B" + filling : filling).isEmpty());
        QVERIFY(matcher.recent(1).bytes.size() <= AnswerMatcher::maxMatch);
        QCOMPARE(answersOf(matcher.add(1, "B" + filling + "END")), QByteArray("1|2"));
        matcher.setRules({rule(AnswerRule::Expression, "v=\\d;")}, TextCodec::Utf8);
        int hits = 0;
        for (int i = 0; i < 100; ++i)
            hits += matcher.add(1, filling + "v=1;").size();
        QCOMPARE(hits, 100);
    }

    void givesUpHardExpressions()
    {
        AnswerMatcher matcher;
        matcher.setRules({rule(AnswerRule::Text, "!", "still"), rule(AnswerRule::Expression, "(a+)+b")},
                         TextCodec::Utf8);
        QVector<int> givenUp;
        for (int i = 0; i < 20 && givenUp.isEmpty(); ++i) {
            QCOMPARE(answersOf(matcher.add(1, QByteArray(500, 'a') + "!")), QByteArray("still"));
            givenUp = matcher.popGivenUp();
        }
        QCOMPARE(givenUp, QVector<int>{1});
        for (int i = 0; i < 100; ++i)
            QVERIFY(matcher.add(1, QByteArray(1000, 'a')).isEmpty());
    }

    void knowsAnEcho_data()
    {
        QTest::addColumn<QByteArray>("received");
        QTest::addColumn<int>("afterMs");
        QTest::addColumn<bool>("isEcho");
        QTest::newRow("all of it") << QByteArray("xAT+OK\r\n") << 10 << true;
        QTest::newRow("its beginning") << QByteArray("x\nAT") << 10 << true;
        QTest::newRow("another one") << QByteArray("AT+NO") << 10 << false;
        QTest::newRow("the same, later") << QByteArray("AT+OK\r\n") << 5000 << false;
    }

    void knowsAnEcho()
    {
        QFETCH(QByteArray, received);
        QFETCH(int, afterMs);
        EchoGuard guard;
        guard.sent(1, "AT+OK\r\nAT", 0);
        const int begin = 1000 + received.indexOf("AT");
        const qint64 timeUs = afterMs * 1000LL;
        QFETCH(bool, isEcho);
        QCOMPARE(guard.isEcho(1, timeUs, {received, 1000}, begin, begin + 2), isEcho);
        // When the rest of it is there.
        if (isEcho)
            QVERIFY(guard.isEcho(1, timeUs, {"AT+OK\r\nAT", begin}, begin + 7, begin + 9));
        QVERIFY(!guard.isEcho(2, timeUs, {received, 1000}, begin, begin + 2));
        // What is sent again is no echo of the same answer.
        QVERIFY(!guard.isEcho(1, timeUs, {received, 2000}, begin + 1000, begin + 1002));
    }

    void pacesAnswers()
    {
        AnswerPacer pacer;
        pacer.setLimit(2);
        QVERIFY(pacer.add({1, "late"}, 900'000));
        QVERIFY(pacer.add({1, "first"}, 100));
        QVERIFY(pacer.add({2, "second"}, 100));
        QVERIFY(pacer.add({2, "third"}, 100));
        QVERIFY(!pacer.popDue(99));
        QCOMPARE(pacer.popDue(100)->bytes, QByteArray("first"));
        QCOMPARE(pacer.popDue(100)->bytes, QByteArray("second"));
        QVERIFY(!pacer.popDue(100));
        QCOMPARE(pacer.popOverLimit(), 1);
        QCOMPARE(*pacer.nextUs(), 900'000);
        QCOMPARE(pacer.popDue(1'000'100)->bytes, QByteArray("late"));
        for (int i = 0; i < AnswerPacer::maxPending; ++i)
            QVERIFY(pacer.add({quint64(i % 4), "x"}, i));
        QVERIFY(!pacer.add({1, "x"}, 0));
        QCOMPARE(pacer.drop(1), AnswerPacer::maxPending / 4);
        QCOMPARE(pacer.dropAll(), AnswerPacer::maxPending * 3 / 4);
        QVERIFY(!pacer.has(2) && !pacer.nextUs() && pacer.popOverLimit() == 0);
    }

    // Of two copies of the program.
    void mergesFiles_data()
    {
        QTest::addColumn<AnswerRules>("mine");
        QTest::addColumn<AnswerRules>("theirs");
        QTest::addColumn<QString>("expected");
        const AnswerRule a = named("a", "1"), b = named("b", "1"), c = named("c", "1"), d = named("d", "1");
        const AnswerRule changed = named("b", "2");
        QTest::newRow("both add") << AnswerRules{a, b, c} << AnswerRules{a, b, d} << "a=1 b=1 d=1 c=1";
        QTest::newRow("one changes") << AnswerRules{a, b} << AnswerRules{a, changed} << "a=1 b=2";
        QTest::newRow("mine wins") << AnswerRules{a, changed} << AnswerRules{a, named("b", "3")} << "a=1 b=2";
        QTest::newRow("one removes") << AnswerRules{b} << AnswerRules{a, b, d} << "b=1 d=1";
        QTest::newRow("removed, changed") << AnswerRules{a} << AnswerRules{a, changed} << "a=1 b=2";
        QTest::newRow("changed, removed") << AnswerRules{a, changed} << AnswerRules{a} << "a=1 b=2";
        QTest::newRow("my order") << AnswerRules{b, a} << AnswerRules{a, b, d} << "b=1 a=1 d=1";
    }

    void mergesFiles()
    {
        QFETCH(AnswerRules, mine);
        QFETCH(AnswerRules, theirs);
        const QTemporaryDir folder;
        const QString name = folder.filePath(QStringLiteral("a/rules.json"));
        AnswerStore one(name), other(name);
        QCOMPARE(one.save({named("a", "1"), named("b", "1")}), QString());
        QCOMPARE(other.load(), QString());
        QCOMPARE(other.save(theirs), QString());
        QCOMPARE(one.save(mine), QString());
        QTEST(ids(one.rules()), "expected");
        AnswerStore third(name);
        third.load();
        QVERIFY(third.rules() == one.rules());
    }

    void storesAllOfARule()
    {
        const QTemporaryDir folder;
        AnswerRule all = rule(AnswerRule::Expression, "\\d", "温度 $0");
        all.name = QStringLiteral("名\"称");
        all.isOn = false;
        all.isHexAnswer = true;
        all.lineEnd = AnswerRule::Lf;
        all.checksum = QStringLiteral("sum8");
        all.delayMs = AnswerRuleFile::maxDelayMs;
        const QString name = folder.filePath(QStringLiteral("rules.json"));
        QCOMPARE(AnswerStore(name).save({all}), QString());
        AnswerStore store(name);
        QCOMPARE(store.load(), QString());
        QVERIFY(store.rules() == AnswerRules{all});
    }

    void keepsRulesThatCannotBeStored()
    {
        const QTemporaryDir folder;
        const QString name = folder.filePath(QStringLiteral("rules.json"));
        QVERIFY(QDir().mkpath(name)); // in the way
        AnswerStore store(name);
        QVERIFY(store.load().contains(QStringLiteral("读取失败")));
        QVERIFY(!store.save({named("a", "1")}).isEmpty());
        QVERIFY(QDir().rmdir(name));
        QCOMPARE(store.load(), QString());
        QCOMPARE(ids(store.rules()), QStringLiteral("a=1"));
    }

    void keepsAFileThatIsNone_data()
    {
        QTest::addColumn<QByteArray>("content");
        const QByteArray head = R"({"format":"korvex-answer-rules","version":1,"rules":[)";
        QTest::newRow("no JSON") << QByteArray("{");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("wrong type") << head + R"({"pattern":"a","on":"yes"}]})";
        QTest::newRow("delay") << head + R"({"pattern":"a","delay":-1}]})";
        QTest::newRow("kind") << head + R"({"pattern":"a","kind":"magic"}]})";
    }

    void keepsAFileThatIsNone()
    {
        QFETCH(QByteArray, content);
        const QTemporaryDir folder;
        const QString name = folder.filePath(QStringLiteral("rules.json"));
        AnswerStore store(name);
        store.save({named("a", "1")});
        QFile file(name);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(content);
        file.close();
        QVERIFY(store.load().contains(QStringLiteral("rules_bad1.json")));
        QFile kept(folder.filePath(QStringLiteral("rules_bad1.json")));
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), content);
        QCOMPARE(ids(store.rules()), QStringLiteral("a=1")); // known here, written again
        QCOMPARE(store.save(store.rules()), QString());
        AnswerStore next(name);
        QCOMPARE(next.load(), QString());
        QVERIFY(next.rules() == store.rules());
    }
};

QTEST_GUILESS_MAIN(TestAnswers)
#include "test_answers.moc"
