#include "hexcopytext.h"

#include <algorithm>

namespace HexCopyText {

namespace {

constexpr int kRow = 16;       // bytes
constexpr int kPythonRow = 32; // bytes
const char kDigits[] = "0123456789ABCDEF";

void appendDigits(QByteArray &text, char byte)
{
    text += kDigits[static_cast<quint8>(byte) >> 4];
    text += kDigits[static_cast<quint8>(byte) & 15];
}

QByteArray cArray(const QByteArray &bytes)
{
    QByteArray text = "static const uint8_t data[" + QByteArray::number(bytes.size()) + "] = {";
    text.reserve(bytes.size() * 6 + bytes.size() / kRow * 4 + 100);
    for (int i = 0; i < bytes.size(); ++i) {
        text += i % kRow == 0 ? "\n    0x" : " 0x";
        appendDigits(text, bytes.at(i));
        text += ',';
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
QByteArray dumpRow(qint64 address, const QByteArray &bytes, int from, int count)
{
    const int column = static_cast<int>(address % kRow);
    QByteArray row = QByteArray::number(address - column, 16).toUpper().rightJustified(8, '0') + ' ';
    QByteArray characters(column, ' ');
    row += QByteArray(3 * column, ' ');
    for (int i = from; i < from + count; ++i) {
        row += ' ';
        appendDigits(row, bytes.at(i));
        const char character = bytes.at(i);
        characters += character >= ' ' && character <= '~' ? character : '.';
    }
    return row + QByteArray(3 * (kRow - column - count), ' ') + "  |" + characters + "|\n";
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
            text += dumpRow(address, bytes, static_cast<int>(at), static_cast<int>(count));
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
