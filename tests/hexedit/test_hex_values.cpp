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
    void parsesBytes()
    {
        const QByteArray three("\x01\xAB\xff", 3);
        QMap<QString, QByteArray> cases{{"", ""}}; // null where it is refused
        for (const char *text :
             {"01 AB FF", "01abFF", "0x01, 0xAB, 0xff", "{0x1,0xAB,0xFF}", "\\x01\\xab\\xff", "01-AB-FF",
              "01:ab:ff", "01\r\nAB\tFF\n", "0x01ABFF", "0x010xAB0xFF"})
            cases[text] = three;
        for (const char *text : {"1", "01 2", "0x", "01 xyz", "012", "0x123", "hello", "01 AB 汉"})
            cases[text] = QByteArray();
        for (auto one = cases.cbegin(); one != cases.cend(); ++one) {
            const auto parsed = HexParse::bytes(one.key());
            QCOMPARE(parsed.has_value(), !one.value().isNull());
            QCOMPARE(parsed.value_or(QByteArray()), one.value());
            for (const int slice : {1, 2, 3}) {
                HexParse::Reader reader(one.key());
                auto state = HexParse::Reader::State::Running;
                while (state == HexParse::Reader::State::Running)
                    state = reader.read(slice);
                QCOMPARE(state == HexParse::Reader::State::Done, parsed.has_value());
                QVERIFY(!parsed || reader.bytes() == one.value());
            }
        }
    }

    void parsesAddresses()
    {
        // With the caret at 100 in 1000 bytes; -1 where it is refused.
        const std::tuple<const char *, qint64, qint64> rows[] = {
            {"0", 0, 0},         {"1000", -1, 1000}, {"00000010", 16, 10},
            {" 0x1F ", 31, 31},  {"1fh", 31, 31},    {"1F", 31, -1},
            {"+0x10", 116, 116}, {"+10", 116, 110},  {"-64", 0, 36},
            {"-100", -1, 0},     {"3e8", 1000, -1},  {"3E9", -1, -1},
            {"+901", -1, -1},    {"", -1, -1},       {"12z", -1, -1},
            {"--1", -1, -1},     {"0x", -1, -1},     {"99999999999999999999", -1, -1}};
        for (const auto &[text, hexadecimal, decimal] : rows) {
            QCOMPARE(HexParse::address(text, 16, 100, 1000).value_or(-1), hexadecimal);
            QCOMPARE(HexParse::address(text, 10, 100, 1000).value_or(-1), decimal);
        }
    }

    // The check values that the definitions give for "123456789".
    void computesChecksums()
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

    void readsCharacters()
    {
        const std::tuple<const char *, int, const char *> rows[] = {
            {"41 C2A9 E6B8A9 F09F9880 42", 0, "A©_温__😀___B"},
            {"E6B8 41 B8A9 E6", 0, "..A..."}, // cut
            {"C380 E4B880 ED959C E641 42", 0, "À_一__한__.AB"},
            {"C080 E09FBF EDA080 F08FBFBF F4908080 F5 FF", 0, ".................."},
            {"41 CEC2 42 81308130 43", 1, "A温_B....C"}, // U+0080 is a control
            {"CEC2 9439DA33 3A 9439DA33", 1, "温_💩___:...."},
            {"CEC2 CE 0A C2 81 30 81 41", 1, "温_....0.."},       // cut
            {"8141 CEC2 8141 8141 20 8141", 1, "丄_温_丄_.. .."}, // rare ones
            {"41 CEC2 E6B8A9", -1, "A....."},
            {"00 1F 20 7E 7F E2808B EFBBBF CC81 EE8080", 0, ".. ~............"}};
        for (const auto &[hex, codec, cells] : rows) {
            HexDocument document;
            document.appendContent(QByteArray::fromHex(hex));
            QCOMPARE(shown(document, 0, 100, codec), QString(cells));
        }
    }

    // A byte reads the same whichever row is first on display, also far behind the
    // last byte that ends all doubt.
    void readsTheSameFromEveryRow()
    {
        const QByteArray words = QByteArray::fromHex("CEC2B6C8"); // each half of a character could begin one
        HexDocument document;
        document.appendContent("\n" + words.repeated(2500) + "\n" + words);
        QString rows;
        for (qint64 at = 0; at < document.size(); at += 16)
            rows += shown(document, at, 16, 1);
        QCOMPARE(rows.mid(1, 8), QString("温_度_温_度_"));
        QCOMPARE(rows.mid(8000, 4), QString("_温_度"));
        QCOMPARE(rows.right(5), QString(".温_度_"));
        for (int at = 0; at < document.size(); at += 512)
            QCOMPARE(shown(document, at, 512, 1), rows.mid(at, 512));
    }

    void explainsBytes()
    {
        // "name=text" of those looked at.
        const std::tuple<QByteArray, bool, const char *> rows[] = {
            {QByteArray::fromHex("FEFFFFFFFFFFFFFF"), false,
             "uint8=254 int8=-2 uint16=65534 int16=-2 uint32=4294967294 int32=-2 "
             "uint64=18446744073709551614 int64=-2"},
            {QByteArray::fromHex("0102030405060708"), true,
             "uint16=258 uint32=16909060 uint64=72623859790382856"},
            {QByteArray::fromHex("0102030405060708"), false,
             "uint16=513 uint32=67305985 uint64=578437695752307201"},
            {QByteArray::fromHex("0000C03F"), false, "float=1.5 double= uint64="},
            {QByteArray::fromHex("BFF8000000000000"), true, "double=-1.5"},
            {QByteArray::fromHex("CDCCCC3D"), false, "float=0.100000001"},
            {QByteArray::fromHex("9A9999999999B93F"), false, "double=0.10000000000000001"},
            {"\xEF\xBF\xBD", false, "UTF-8="},
            {"\xE4\xB8\xAD!", false, "UTF-8=\xE4\xB8\xAD"},
            {"\xD6\xD0!", false, "GB18030=\xE4\xB8\xAD UTF-8="},
            {QByteArray::fromHex("6553F100"), true, "uint32=1700000000 时间戳(32位)=2023-11-14_22:13:20"},
            {QByteArray(), false, "uint8= int64= float= 时间戳(32位)= UTF-8="}};
        for (const auto &[bytes, bigEndian, expected] : rows) {
            QHash<QString, QString> values;
            for (const HexInspector::Value &value : HexInspector::values(bytes, bigEndian))
                values.insert(value.name, QString(value.text).replace(' ', '_'));
            for (const QString &pair : QString(expected).split(' '))
                QCOMPARE(values.value(pair.section('=', 0, 0), "(none)"), pair.section('=', 1));
        }
    }

private:
    // '_' for a cell inside a character.
    static QString shown(const HexDocument &document, qint64 at, int count, int codec)
    {
        QString text;
        for (const QString &cell : HexCharacters::cells(document, at, count, codec))
            text += cell.isEmpty() ? QString("_") : cell;
        return text;
    }
};

QTEST_APPLESS_MAIN(TestHexValues)
#include "test_hex_values.moc"
