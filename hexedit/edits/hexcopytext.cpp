#include "hexcopytext.h"

#include <algorithm>

namespace HexCopyText {

namespace {

constexpr int kRow = 16;       // bytes
constexpr int kPythonRow = 32; // bytes
const char kDigits[] = "0123456789ABCDEF";

// Rows are put together here: appending each character to a long text is slow.
struct Row
{
    char text[128];
    int length = 0;

    void add(char character) { text[length++] = character; }
    void add(const char *characters)
    {
        while (*characters)
            add(*characters++);
    }
    void addBlanks(int count)
    {
        while (count-- > 0)
            add(' ');
    }
    void addDigits(char byte)
    {
        add(kDigits[static_cast<quint8>(byte) >> 4]);
        add(kDigits[static_cast<quint8>(byte) & 15]);
    }
};

QByteArray cArray(const QByteArray &bytes)
{
    QByteArray text = "static const uint8_t data[" + QByteArray::number(bytes.size()) + "] = {";
    text.reserve(bytes.size() * 6 + bytes.size() / kRow * 4 + 100);
    for (int begin = 0; begin < bytes.size(); begin += kRow) {
        Row row;
        row.add("\n   ");
        for (int i = begin; i < qMin(begin + kRow, bytes.size()); ++i) {
            row.add(" 0x");
            row.addDigits(bytes.at(i));
            row.add(',');
        }
        text.append(row.text, row.length);
    }
    return text + "\n};\n";
}

QByteArray python(const QByteArray &bytes)
{
    QByteArray text = "data = bytes.fromhex(";
    for (int i = 0; i < bytes.size(); i += kPythonRow)
        text += "\n    \"" + bytes.mid(i, kPythonRow).toHex(' ').toUpper() + '"';
    return text + "\n)\n";
}

// A row, without the bytes before and behind it that are no part of the copy.
Row dumpRow(qint64 address, const QByteArray &bytes, int from, int count)
{
    const int column = static_cast<int>(address % kRow);
    Row row;
    row.add(QByteArray::number(address - column, 16).toUpper().rightJustified(8, '0').constData());
    row.addBlanks(1 + 3 * column);
    for (int i = from; i < from + count; ++i) {
        row.add(' ');
        row.addDigits(bytes.at(i));
    }
    row.addBlanks(3 * (kRow - column - count) + 2);
    row.add('|');
    row.addBlanks(column);
    for (int i = from; i < from + count; ++i)
        row.add(bytes.at(i) >= ' ' && bytes.at(i) <= '~' ? bytes.at(i) : '.');
    row.add("|\n");
    return row;
}

QByteArray dump(const QByteArray &bytes, const HexRuns &runs)
{
    QByteArray text;
    text.reserve(bytes.size() * 5);
    for (const HexRun &run : runs) {
        const qint64 end = std::min<qint64>(run.offset + run.length, bytes.size());
        for (qint64 at = run.offset; at < end;) {
            const qint64 address = run.address + at - run.offset;
            const qint64 count = std::min(kRow - address % kRow, end - at);
            const Row row = dumpRow(address, bytes, static_cast<int>(at), static_cast<int>(count));
            text.append(row.text, row.length);
            at += count;
        }
    }
    return text;
}

} // namespace

QString text(const QByteArray &bytes, Form form, const HexRuns &runs)
{
    switch (form) {
    case Form::CArray:
        return QString::fromLatin1(cArray(bytes));
    case Form::Python:
        return QString::fromLatin1(python(bytes));
    case Form::Base64:
        return QString::fromLatin1(bytes.toBase64());
    default:
        return QString::fromLatin1(dump(bytes, runs));
    }
}

} // namespace HexCopyText
