// What can be looked for in bytes besides a row of them: open digits, numbers,
// expressions, and texts in the usual encodings.

#include "hexsearch.h"
#include "hexstrings.h"

#include <QtTest>

Q_DECLARE_METATYPE(HexPattern::Number)

namespace {

// One byte to a block: what is found stands over many of them.
HexDocument documentOf(const QByteArray &bytes)
{
    HexDocument document;
    for (const char byte : bytes)
        document.appendContent(QByteArray(1, byte));
    return document;
}

struct Find
{
    qint64 at = -1;
    qint64 length = 0;
    HexSearch::State state = HexSearch::State::Running;
};

Find find(const HexDocument &document, const HexPattern &pattern, qint64 from, HexSearch::Direction direction)
{
    HexSearch search(document, pattern, from, direction, HexSearch::StopAtEnd);
    Find found;
    while (found.state == HexSearch::State::Running)
        found.state = search.step();
    if (found.state == HexSearch::State::Found)
        found = {search.position(), search.length(), found.state};
    return found;
}

} // namespace

class TestHexSearch : public QObject
{
    Q_OBJECT

private slots:
    void findsOpenDigits()
    {
        const HexDocument document = documentOf(QByteArray::fromHex("0055a10155b202553c01"));
        const auto at = [&document](const char *text, qint64 from, HexSearch::Direction direction) {
            return find(document, *HexPattern::digits(text), from, direction).at;
        };
        QCOMPARE(at("55 ?? 01", 0, HexSearch::Forward), 1);
        QCOMPARE(at("55 ?? 01", 2, HexSearch::Forward), 7);
        QCOMPARE(at("55 ?? 01", 7, HexSearch::Backward), 1);
        QCOMPARE(at("5? ?2", 0, HexSearch::Forward), 4);
        QCOMPARE(at("?? 00", 0, HexSearch::Forward), -1);
        QCOMPARE(at("?1", 10, HexSearch::Backward), 9);
        QVERIFY(!HexPattern::digits("5? ?") && !HexPattern::digits("5g"));
    }

    void findsNumbers_data()
    {
        using Number = HexPattern::Number;
        QTest::addColumn<Number>("kind");
        QTest::addColumn<QString>("range");
        QTest::addColumn<bool>("bigEndian");
        QTest::addColumn<int>("at"); // -1: none; -2: no such number
        QTest::newRow("byte") << Number::U8 << "255" << false << 4;
        QTest::newRow("negative byte") << Number::I8 << "-3..-1" << false << 4;
        QTest::newRow("not a byte") << Number::U8 << "256" << false << -2;
        QTest::newRow("little-endian") << Number::U16 << "0x3412" << false << 0;
        QTest::newRow("big-endian") << Number::U16 << "0x1234" << true << 0;
        QTest::newRow("range") << Number::U32 << " 0x78563411 .. 0x78563413 " << false << 0;
        QTest::newRow("bits of a negative one") << Number::I16 << "0xFFFE" << true << 4;
        QTest::newRow("as many bits as there are")
            << Number::U64 << "0xFFFE000000000000..0xFFFFFFFFFFFFFFFF" << true << 4;
        QTest::newRow("float") << Number::Float << "1.4..1.6" << false << 12;
        QTest::newRow("double") << Number::Double << "-2" << true << 16;
        QTest::newRow("nowhere") << Number::Double << "1e300..2e300" << true << -1;
        QTest::newRow("wrong order") << Number::I32 << "5..-5" << false << -2;
        QTest::newRow("no number") << Number::I32 << "5.." << false << -2;
        QTest::newRow("below zero") << Number::U32 << "-1" << false << -2;
    }

    void findsNumbers()
    {
        QFETCH(HexPattern::Number, kind);
        QFETCH(QString, range);
        QFETCH(bool, bigEndian);
        QFETCH(int, at);
        const HexDocument document = documentOf(QByteArray::fromHex("12345678fffe0000000000000000c03f"
                                                                    "c000000000000000"));
        const auto pattern = HexPattern::number(range, kind, bigEndian);
        QCOMPARE(!pattern, at == -2);
        if (!pattern)
            return;
        QCOMPARE(find(document, *pattern, 0, HexSearch::Forward).at, at);
        if (at >= 0)
            QCOMPARE(find(document, *pattern, at + 1, HexSearch::Backward).at, at);
    }

    void findsExpressions()
    {
        QByteArray bytes(5000, '\0');
        bytes.replace(1020, 8,
                      QByteArray("\xAB"
                                 "12345\n\xFF",
                                 8)); // over two slices
        bytes.replace(3000, 3, "ab\xC4");
        bytes.replace(4000, 2, "\x02\x01");
        const HexDocument document = documentOf(bytes);
        QString fault;
        const auto found = [&](const char *text, qint64 from, HexSearch::Direction direction) {
            return find(document, *HexPattern::expression(QString::fromLatin1(text), &fault), from,
                        direction);
        };
        Find digits = found("\\xAB\\d+.\\xff", 0, HexSearch::Forward);
        QVERIFY(digits.at == 1020 && digits.length == 8);
        QCOMPARE(found("\\d+", 5000, HexSearch::Backward).at, 1025); // the last one that begins there
        QCOMPARE(found("(?<=\\xAB)1", 0, HexSearch::Forward).at, 1021);
        QCOMPARE(found("^\\x00", 0, HexSearch::Forward).at, 0);
        QCOMPARE(found("^\\x00", 1, HexSearch::Forward).at, -1);
        QCOMPARE(found("\\w+", 2000, HexSearch::Forward).length, 2); // no byte beyond ASCII is a letter
        QCOMPARE(found("x*", 0, HexSearch::Forward).at, -1);         // nothing is no match
        QCOMPARE(found("(\\x00+)+\\x01", 0, HexSearch::Forward).state, HexSearch::State::TooHard);
        QVERIFY(!HexPattern::expression("(", &fault) && !fault.isEmpty());
    }

    void findsTexts()
    {
        using Row = std::tuple<qint64, int, int>;
        const auto texts = [](const QByteArray &bytes, int encodings, int min) {
            const HexDocument document = documentOf(bytes);
            HexStrings search(document, encodings, min);
            while (search.step()) {
            }
            std::vector<Row> rows;
            for (const HexStrings::Text &text : search.takeTexts())
                rows.emplace_back(text.address, text.length, text.encoding);
            return rows;
        };
        const QByteArray zero(1, '\0');
        using Rows = std::vector<Row>;
        QVERIFY(texts("abc" + zero +
                          "ab\x80"
                          "defg\x7F",
                      HexStrings::Ascii, 3) == (Rows{{0, 3, HexStrings::Ascii}, {7, 4, HexStrings::Ascii}}));
        const QByteArray utf8 =
            zero + "a" + QString("板子").toUtf8() + zero + QByteArray::fromHex("e69d61c080eda080");
        QVERIFY(texts(utf8, HexStrings::Utf8, 2) == (Rows{{1, 7, HexStrings::Utf8}}));
        const QByteArray gb = QByteArray::fromHex("00b0e5d7d33180") + zero;
        QVERIFY(texts(gb, HexStrings::Gb18030, 3) == (Rows{{1, 5, HexStrings::Gb18030}}));
        QVERIFY(texts(QByteArray::fromHex("e0000041004267ff"), HexStrings::Utf16Be, 3) ==
                (Rows{{2, 6, HexStrings::Utf16Be}}));
        QVERIFY(texts(QByteArray::fromHex("ff41004200c467"), HexStrings::Utf16Le, 3) ==
                (Rows{{1, 6, HexStrings::Utf16Le}}));
        // A long one comes in parts; what two encodings share is listed once.
        const auto parts = texts(QByteArray(5000, 'x'), HexStrings::Utf8 | HexStrings::Gb18030, 3);
        QVERIFY(parts == (Rows{{0, 4096, HexStrings::Ascii}, {4096, 904, HexStrings::Ascii}}));
    }
};

QTEST_APPLESS_MAIN(TestHexSearch)
#include "test_hex_search.moc"
