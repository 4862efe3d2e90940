#include "hexvalueinput.h"

#include "hexinspector.h"
#include "textcodec.h"

#include <QDateTime>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace HexValueInput {

namespace {

Input faulty(const QString &fault)
{
    return {QByteArray(), fault};
}

Input bytesOf(quint64 bits, int count, bool bigEndian, const QByteArray &present)
{
    if (present.size() < count)
        return faulty(QStringLiteral("此处到末尾不足%1字节").arg(count));
    Input input;
    for (int i = 0; i < count; ++i)
        input.bytes += static_cast<char>(bits >> (8 * (bigEndian ? count - 1 - i : i)));
    return input;
}

Input integer(const QString &text, int count, bool isSigned, bool bigEndian, const QByteArray &present)
{
    const int width = 8 * count;
    const quint64 all = std::numeric_limits<quint64>::max() >> (64 - width);
    const quint64 positive = isSigned ? all >> 1 : all;
    const bool isNegative = text.startsWith(QLatin1Char('-'));
    const QString digits = isNegative ? text.mid(1) : text;
    const bool isHex = digits.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    const QString number = isHex ? digits.mid(2) : digits;
    const int base = isHex ? 16 : 10;
    const bool isPlain = !number.isEmpty() && std::all_of(number.begin(), number.end(), [base](QChar digit) {
        bool isDigit = false;
        QString(digit).toInt(&isDigit, base);
        return isDigit;
    });
    if (!isPlain)
        return faulty(QStringLiteral("请输入十进制整数，或以0x开头的十六进制数"));
    bool isNumber = false;
    const quint64 value = number.toULongLong(&isNumber, base);
    const quint64 limit = isNegative ? (isSigned ? positive + 1 : 0) : isHex ? all : positive;
    if (!isNumber || value > limit)
        return faulty(
            QStringLiteral("超出范围：%1到%2")
                .arg(isSigned ? QLatin1Char('-') + QString::number(positive + 1) : QStringLiteral("0"),
                     QString::number(positive)));
    return bytesOf(isNegative ? ~value + 1 : value, count, bigEndian, present);
}

template <class Float, class Bits>
Input real(const QString &text, bool bigEndian, const QByteArray &present, const QString &type)
{
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    if (!isNumber)
        return faulty(QStringLiteral("请输入数，如 -1.5 或 2e-3"));
    const Float number = static_cast<Float>(value);
    if (std::isfinite(value) && (!std::isfinite(number) || (value != 0 && number == 0)))
        return faulty(QStringLiteral("超出%1的范围").arg(type));
    Bits bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bytesOf(bits, static_cast<int>(sizeof bits), bigEndian, present);
}

Input character(const QString &text, int codec, const QString &shown)
{
    if (shown.isEmpty())
        return faulty(QStringLiteral("此处的字节不是该编码的字符，不能改写为字符"));
    const bool isOne = text.size() == 1 || (text.size() == 2 && text.at(0).isHighSurrogate());
    if (!isOne)
        return faulty(QStringLiteral("请输入一个字符"));
    const QByteArray bytes = TextCodec::encode(text, codec);
    if (TextCodec::decode(bytes, codec) != text)
        return faulty(QStringLiteral("该编码中没有此字符"));
    const int length = TextCodec::encode(shown, codec).size();
    if (bytes.size() != length)
        return faulty(
            QStringLiteral("此字符有%1字节，原字符有%2字节，不能改写").arg(bytes.size()).arg(length));
    return {bytes, QString()};
}

Input time(const QString &text, bool bigEndian, const QByteArray &present)
{
    const QDateTime time(
        QDate::fromString(text.section(QLatin1Char(' '), 0, 0), QStringLiteral("yyyy-MM-dd")),
        QTime::fromString(text.section(QLatin1Char(' '), 1), QStringLiteral("hh:mm:ss")), Qt::UTC);
    if (!time.isValid())
        return faulty(QStringLiteral("请输入UTC时间，如 2024-01-31 08:30:00"));
    const qint64 seconds = time.toSecsSinceEpoch();
    if (seconds < 0 || seconds > std::numeric_limits<quint32>::max())
        return faulty(QStringLiteral("超出范围：1970-01-01 00:00:00到2106-02-07 06:28:15"));
    return bytesOf(static_cast<quint64>(seconds), 4, bigEndian, present);
}

} // namespace

Input read(int index, const QString &text, bool bigEndian, const QByteArray &present)
{
    // In the order of HexInspector::values(): signed and unsigned integers alternate.
    enum { Integers = 8, Real = Integers, LongReal, Utf8, Gb18030 };
    const QString typed = text.trimmed();
    if (index < Integers)
        return integer(typed, 1 << (index / 2), index % 2 == 1, bigEndian, present);
    const auto shown = [&] { return HexInspector::values(present, bigEndian).at(index).text; };
    switch (index) {
    case Real:
        return real<float, quint32>(typed, bigEndian, present, QStringLiteral("float"));
    case LongReal:
        return real<double, quint64>(typed, bigEndian, present, QStringLiteral("double"));
    case Utf8:
        return character(text, TextCodec::Utf8, shown());
    case Gb18030:
        return character(text, TextCodec::Gb18030, shown());
    default:
        return time(typed, bigEndian, present);
    }
}

} // namespace HexValueInput
