// Operations on many bytes, the texts of copies, and values that are typed.

#include "hexcopytext.h"
#include "hexinspector.h"
#include "hextransform.h"
#include "hexvalueinput.h"

#include <QtTest>

using Kind = HexOperation::Kind;

class TestHexEdits : public QObject
{
    Q_OBJECT

private slots:
    void changesBytes()
    {
        struct Row
        {
            const char *before;
            HexOperation operation;
            const char *after; // of all but the bytes of a unit that is cut
        };
        const auto with = [](Kind kind, const char *operand) {
            return HexOperation{kind, QByteArray::fromHex(operand)};
        };
        const auto unit = [](Kind kind, int size, bool bigEndian, int bits = 1, quint64 addend = 0) {
            return HexOperation{kind, {}, addend, size, bigEndian, bits};
        };
        const Row rows[] = {{"0102030405", with(Kind::Fill, "AABB"), "AABBAABBAA"},
                            {"0102030405", with(Kind::Xor, "FF00"), "FE02FC04FA"},
                            {"0F0F", with(Kind::And, "3C"), "0C0C"},
                            {"0F0F", with(Kind::Or, "30"), "3F3F"},
                            {"00FF5A", with(Kind::Not, ""), "FF00A5"},
                            {"018050", with(Kind::ReverseBits, ""), "80010A"},
                            {"010203", with(Kind::ReverseOrder, ""), "030201"},
                            {"FFFF00FF", unit(Kind::Add, 1, false, 1, 1), "00000100"},
                            {"FF00FFFF05", unit(Kind::Add, 2, false, 1, 1), "00010000"},
                            {"00FFFFFF", unit(Kind::Add, 2, true, 1, 1), "01000000"},
                            {"00000000", unit(Kind::Add, 4, true, 1, ~quint64(0)), "FFFFFFFF"},
                            {"01020304050607", unit(Kind::SwapBytes, 2, false), "020104030605"},
                            {"01020304", unit(Kind::SwapBytes, 4, true), "04030201"},
                            {"0102030405060708", unit(Kind::SwapBytes, 8, false), "0807060504030201"},
                            {"81", unit(Kind::ShiftLeft, 1, false, 1), "02"},
                            {"8001", unit(Kind::ShiftRight, 2, false, 4), "1800"},
                            {"8001", unit(Kind::ShiftRight, 2, true, 4), "0800"},
                            {"81", unit(Kind::RotateLeft, 1, false, 1), "03"},
                            {"80000001", unit(Kind::RotateRight, 4, true, 4), "18000000"},
                            {"8000000000000001", unit(Kind::RotateLeft, 8, true, 63), "C000000000000000"}};
        for (const Row &row : rows) {
            const QByteArray before = QByteArray::fromHex(row.before);
            const QByteArray after = QByteArray::fromHex(row.after);
            HexDocument document;
            document.appendContent("##" + before + "##");
            HexTransform transform(document, 2, before.size(), row.operation);
            QByteArray bytes;
            while (!transform.isDone())
                bytes += transform.next();
            QCOMPARE(bytes.toHex(), after.toHex());
            QCOMPARE(transform.unchanged(), qint64(before.size() - after.size()));
        }
    }

    // More than one slice, which is no multiple of the pattern.
    void changesLongRanges()
    {
        QByteArray content;
        for (int i = 0; i < 200001; ++i)
            content += static_cast<char>(i * 7 >> 4);
        HexDocument document;
        document.appendContent(content);
        for (const Kind kind : {Kind::ReverseOrder, Kind::Xor}) {
            HexTransform transform(document, 1, content.size() - 1, {kind, "\x01\x02\x04"});
            HexDocument::Batch batch;
            while (!transform.isDone()) {
                const qint64 at = transform.position();
                const QByteArray bytes = transform.next();
                document.addToBatch(batch, at, bytes.size(), bytes);
            }
            document.applyBatch(batch);
            QByteArray expected = content.mid(1);
            if (kind == Kind::ReverseOrder)
                std::reverse(expected.begin(), expected.end());
            else
                for (int i = 0; i < expected.size(); ++i)
                    expected[i] = static_cast<char>(expected.at(i) ^ (1 << i % 3));
            QVERIFY(document.read(0, content.size()) == content.left(1) + expected);
            document.undo();
            QVERIFY(document.read(0, content.size()) == content && !document.canUndo());
        }
    }

    void copiesAsText()
    {
        using HexCopyText::Form;
        const QByteArray bytes = "0123456789abcdefg\xFF";
        const HexRuns runs{{0x1FE, 0, 3}, {0x8000010, 3, 15}};
        const std::pair<Form, const char *> rows[] = {
            {Form::CArray, "static const uint8_t data[18] = {\n"
                           "    0x30, 0x31, 0x32, 0x33, 0x34, 0x35, 0x36, 0x37, 0x38, 0x39, 0x61, 0x62, 0x63,"
                           " 0x64, 0x65, 0x66,\n    0x67, 0xFF,\n};\n"},
            {Form::Python,
             "data = bytes.fromhex(\n    \"30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66 67 FF\"\n)\n"},
            {Form::Base64, "MDEyMzQ1Njc4OWFiY2RlZmf/"},
            {Form::HexDump,
             "000001F0                                            30 31  |              01|\n"
             "00000200  32                                               |2|\n"
             "08000010  33 34 35 36 37 38 39 61 62 63 64 65 66 67 FF     |3456789abcdefg.|\n"}};
        for (const auto &[form, expected] : rows)
            QCOMPARE(HexCopyText::text(bytes, form, runs), QString(expected));
    }

    void readsTypedValues()
    {
        const auto indexOf = [](const QString &name) {
            const auto values = HexInspector::values({}, false);
            for (int i = 0; i < values.size(); ++i)
                if (values.at(i).name == name)
                    return i;
            return -1;
        };
        const QByteArray letters(16, 'a');
        const std::tuple<const char *, const char *, bool, QByteArray, const char *> rows[] = {
            {"uint8", "255", false, letters, "ff"},
            {"int8", "-128", false, letters, "80"},
            {"int8", "0xFF", false, letters, "ff"},
            {"uint16", "0x102", false, letters, "0201"},
            {"uint16", " 258 ", true, letters, "0102"},
            {"uint64", "18446744073709551615", false, letters, "ffffffffffffffff"},
            {"int64", "-9223372036854775808", true, letters, "8000000000000000"},
            {"float", "1.5", false, letters, "0000c03f"},
            {"double", "-1.5", true, letters, "bff8000000000000"},
            {"double", "0.1", false, letters, "9a9999999999b93f"},
            {"UTF-8", "b", false, letters, "62"},
            {"UTF-8", "\xE6\xB8\xA9", false, "\xE4\xB8\xAD!", "e6b8a9"},
            {"UTF-8", "b", false, "\xFF", ""},
            {"GB18030", "\xE6\xB8\xA9", false, "\xD6\xD0!", "cec2"},
            {"uint32", "1", false, "abc", ""}, // three bytes
            {"时间戳(32位)", "2024-03-31 02:30:00", false, letters,
             "a8ca0866"}}; // missing in summer time zones
        for (const auto &[name, text, bigEndian, present, bytes] : rows)
            QCOMPARE(HexValueInput::read(indexOf(name), text, bigEndian, present).bytes.toHex(),
                     QByteArray(bytes));
        const std::pair<const char *, const char *> refused[] = {
            {"uint8", "256|-1|"},
            {"int8", "-129|128|0x100"},
            {"uint16", "0x-1|--1|1 2"},
            {"uint64", "18446744073709551616"},
            {"int64", "9223372036854775808"},
            {"float", "1e39|1e-60|1,5"},
            {"UTF-8", "bc|\xC3\xA4"}, // two bytes for one
            {"时间戳(32位)", "2023-13-14 22:13:20|2106-02-07 06:28:16"}};
        for (const auto &[name, texts] : refused) {
            for (const QString &text : QString(texts).split('|')) {
                const auto input = HexValueInput::read(indexOf(name), text, false, letters);
                QVERIFY2(input.bytes.isEmpty() && !input.fault.isEmpty(), qPrintable(text));
            }
        }
    }
};

QTEST_APPLESS_MAIN(TestHexEdits)
#include "test_hex_edits.moc"
