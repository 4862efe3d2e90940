// Hexadecimal text, addresses, checksums and the meanings of bytes.

#include "hexcharacters.h"
#include "hexchecksum.h"
#include "hexinspector.h"
#include "hexparse.h"

#include <QtTest>

class TestHexValues : public QObject
{
    Q_OBJECT

private slots:
    void parsesBytes_data();
    void parsesBytes();
    void parsesAddresses_data();
    void parsesAddresses();
    void computesChecksums();
    void readsCharacters_data();
    void readsCharacters();
    void readsTheSameFromEveryRow();
    void explainsBytes_data();
    void explainsBytes();
};

void TestHexValues::parsesBytes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes"); // null where it is refused
    const QByteArray three("\x01\xAB\xff", 3);
    for (const char *text : {"01 AB FF", "01abFF", "0x01, 0xAB, 0xff", "{0x1,0xAB,0xFF}", "\\x01\\xab\\xff",
                             "01-AB-FF", "01:ab:ff", "01\r\nAB\tFF\n", "0x01ABFF", "0x010xAB0xFF"})
        QTest::newRow(text) << QString::fromLatin1(text) << three;
    QTest::newRow("empty") << QString() << QByteArray("");
    for (const char *text : {"1", "01 2", "0x", "01 xyz", "012", "0x123", "hello", "01 AB 汉"})
        QTest::newRow(text) << QString::fromUtf8(text) << QByteArray();
}

void TestHexValues::parsesBytes()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);
    const auto parsed = HexParse::bytes(text);
    QCOMPARE(parsed.has_value(), !bytes.isNull());
    if (parsed)
        QCOMPARE(*parsed, bytes);
    for (const int slice : {1, 2, 3}) {
        HexParse::Reader reader(text);
        auto state = HexParse::Reader::State::Running;
        while (state == HexParse::Reader::State::Running)
            state = reader.read(slice);
        QCOMPARE(state == HexParse::Reader::State::Done, parsed.has_value());
        QVERIFY(!parsed || reader.bytes() == bytes);
    }
}

void TestHexValues::parsesAddresses_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("address"); // with the caret at 100 in 1000 bytes; -1 where it is refused
    QTest::addColumn<qint64>("decimal");
    const std::tuple<const char *, qint64, qint64> rows[] = {
        {"0", 0, 0},         {"1000", -1, 1000}, {"00000010", 16, 10},
        {" 0x1F ", 31, 31},  {"1fh", 31, 31},    {"1F", 31, -1},
        {"+0x10", 116, 116}, {"+10", 116, 110},  {"-64", 0, 36},
        {"-100", -1, 0},     {"3e8", 1000, -1},  {"3E9", -1, -1},
        {"+901", -1, -1},    {"", -1, -1},       {"12z", -1, -1},
        {"--1", -1, -1},     {"0x", -1, -1},     {"99999999999999999999", -1, -1}};
    for (const auto &[text, address, decimal] : rows)
        QTest::newRow(text) << QString::fromLatin1(text) << address << decimal;
}

void TestHexValues::parsesAddresses()
{
    QFETCH(QString, text);
    QTEST(HexParse::address(text, 16, 100, 1000).value_or(-1), "address");
    QTEST(HexParse::address(text, 10, 100, 1000).value_or(-1), "decimal");
}

// The check values that the definitions give for "123456789".
void TestHexValues::computesChecksums()
{
    HexChecksum sums;
    sums.add("1234", 4);
    sums.add("56789", 5);
    QCOMPARE(sums.crc32(), quint32(0xCBF43926));
    QCOMPARE(sums.crc16Modbus(), quint32(0x4B37));
    QCOMPARE(sums.sum(), quint64(477));
    QCOMPARE(sums.md5().toHex(), QByteArray("25f9e794323b453885f5181f1b624d0b"));
    QCOMPARE(sums.sha256().toHex(),
             QByteArray("15e2b0d3c33891ebb0f1ef609ec419420c20e320ce94c65fbc8c3312448eb225"));
}

void TestHexValues::readsCharacters_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("codec");
    QTest::addColumn<QString>("cells"); // '_' for one inside a character
    const auto hex = [](const char *text) { return QByteArray::fromHex(text); };
    QTest::newRow("UTF-8") << hex("41 C3A9 E6B8A9 F09F9880 42") << 0 << "Aé_温__😀___B";
    QTest::newRow("UTF-8, cut") << hex("E6B8 41 B8A9 E6") << 0 << "..A...";
    QTest::newRow("UTF-8, none such")
        << hex("C080 E09FBF EDA080 F08FBFBF F4908080 F5 FF") << 0 << "..................";
    QTest::newRow("GB18030") << hex("41 CEC2 42 81308130 43") << 1 << "A温_B....C"; // U+0080 is a control
    QTest::newRow("GB18030, four bytes") << hex("CEC2 9439DA33 3A 9439DA33") << 1 << "温_💩___:....";
    QTest::newRow("GB18030, cut") << hex("CEC2 CE 0A C2 81 30 81 41") << 1 << "温_....0..";
    QTest::newRow("GB18030, rare ones") << hex("8141 CEC2 8141 8141 20 8141") << 1 << "丄_温_丄_.. ..";
    QTest::newRow("ASCII only") << hex("41 CEC2 E6B8A9") << -1 << "A.....";
    QTest::newRow("controls") << hex("00 1F 20 7E 7F E2808B EFBBBF CC81 EE8080") << 0 << ".. ~............";
}

void TestHexValues::readsCharacters()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, codec);
    HexDocument document;
    document.appendContent(bytes);
    QString shown;
    for (const HexCharacters::Cell &cell : HexCharacters::cells(document, 0, 100, codec))
        shown += cell.text.isEmpty() ? QStringLiteral("_") : cell.text;
    QTEST(shown, "cells");
}

// A byte reads the same whichever row is first on display, also far behind the
// last byte that ends all doubt.
void TestHexValues::readsTheSameFromEveryRow()
{
    const QByteArray words = QByteArray::fromHex("CEC2B6C8"); // each half of a character could begin one
    HexDocument document;
    document.appendContent("\n" + words.repeated(2500) + "\n" + words);
    const auto read = [&document](int rowLength) {
        QString shown;
        for (qint64 at = 0; at < document.size(); at += rowLength)
            for (const HexCharacters::Cell &cell : HexCharacters::cells(document, at, rowLength, 1))
                shown += cell.text.isEmpty() ? QStringLiteral("_") : cell.text;
        return shown;
    };
    const QString rows = read(16);
    QCOMPARE(rows.size(), 10006);
    QCOMPARE(rows.mid(1, 8), QStringLiteral("温_度_温_度_"));
    QCOMPARE(rows.mid(8000, 4), QStringLiteral("_温_度"));
    QCOMPARE(rows.right(5), QStringLiteral(".温_度_"));
    QCOMPARE(read(512), rows);
}

void TestHexValues::explainsBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("bigEndian");
    QTest::addColumn<QString>("expected"); // name=text of those looked at
    QTest::newRow("signs") << QByteArray::fromHex("FEFFFFFFFFFFFFFF") << false
                           << "uint8=254 int8=-2 uint16=65534 int16=-2 uint32=4294967294 int32=-2 "
                              "uint64=18446744073709551614 int64=-2";
    QTest::newRow("big endian") << QByteArray::fromHex("0102030405060708") << true
                                << "uint16=258 uint32=16909060 uint64=72623859790382856";
    QTest::newRow("little endian") << QByteArray::fromHex("0102030405060708") << false
                                   << "uint16=513 uint32=67305985 uint64=578437695752307201";
    QTest::newRow("float") << QByteArray::fromHex("0000C03F") << false << "float=1.5 double= uint64=";
    QTest::newRow("double") << QByteArray::fromHex("BFF8000000000000") << true << "double=-1.5";
    QTest::newRow("UTF-8") << QByteArray("\xE4\xB8\xAD!") << false << "UTF-8=\xE4\xB8\xAD";
    QTest::newRow("GB18030") << QByteArray("\xD6\xD0!") << false << "GB18030=\xE4\xB8\xAD UTF-8=";
    QTest::newRow("time") << QByteArray::fromHex("6553F100") << true << "uint32=1700000000";
    QTest::newRow("nothing") << QByteArray() << false << "uint8= int64= float= 时间戳(32位)= UTF-8=";
}

void TestHexValues::explainsBytes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, bigEndian);
    QFETCH(QString, expected);
    QHash<QString, QString> values;
    for (const HexInspector::Value &value : HexInspector::values(bytes, bigEndian))
        values.insert(value.name, value.text);
    for (const QString &pair : expected.split(QLatin1Char(' ')))
        QCOMPARE(values.value(pair.section('=', 0, 0), QStringLiteral("(none)")), pair.section('=', 1));
    if (qstrcmp(QTest::currentDataTag(), "time") == 0)
        QCOMPARE(values.value(QStringLiteral("时间戳(32位)")), QStringLiteral("2023-11-14 22:13:20"));
}

QTEST_APPLESS_MAIN(TestHexValues)
#include "test_hex_values.moc"
