#include "hexinspector.h"

#include "textcodec.h"

#include <QDateTime>
#include <QtEndian>
#include <cstring>

namespace HexInspector {

namespace {

template <class Number> Number numberOf(const QByteArray &bytes, bool bigEndian)
{
    return bigEndian ? qFromBigEndian<Number>(bytes.constData())
                     : qFromLittleEndian<Number>(bytes.constData());
}

template <class Unsigned, class Signed>
void addIntegers(QVector<Value> &values, const QByteArray &bytes, bool bigEndian)
{
    const int bits = static_cast<int>(sizeof(Unsigned)) * 8;
    const bool enough = bytes.size() >= static_cast<int>(sizeof(Unsigned));
    const Unsigned number = enough ? numberOf<Unsigned>(bytes, bigEndian) : Unsigned(0);
    values.append({QStringLiteral("uint%1").arg(bits), enough ? QString::number(number) : QString()});
    values.append({QStringLiteral("int%1").arg(bits),
                   enough ? QString::number(static_cast<Signed>(number)) : QString()});
}

template <class Float, class Bits> QString floatText(const QByteArray &bytes, bool bigEndian, int digits)
{
    if (bytes.size() < static_cast<int>(sizeof(Float)))
        return QString();
    const Bits bits = numberOf<Bits>(bytes, bigEndian);
    Float number;
    std::memcpy(&number, &bits, sizeof number);
    return QString::number(static_cast<double>(number), 'g', digits);
}

// The one character that the bytes begin with.
QString characterOf(const QByteArray &bytes, int codec)
{
    for (int length = 1; length <= qMin(4, bytes.size()); ++length) {
        const QByteArray taken = bytes.left(length);
        const QString text = TextCodec::decode(taken, codec);
        if (text.isEmpty() || text.contains(QChar::ReplacementCharacter) ||
            TextCodec::encode(text, codec) != taken)
            continue;
        return text.at(0).isPrint() || text.at(0).isSurrogate() ? text : QString();
    }
    return QString();
}

QString timeText(const QByteArray &bytes, bool bigEndian)
{
    if (bytes.size() < 4)
        return QString();
    return QDateTime::fromSecsSinceEpoch(numberOf<quint32>(bytes, bigEndian), Qt::UTC)
        .toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
}

} // namespace

QVector<Value> values(const QByteArray &bytes, bool bigEndian)
{
    QVector<Value> values;
    addIntegers<quint8, qint8>(values, bytes, bigEndian);
    addIntegers<quint16, qint16>(values, bytes, bigEndian);
    addIntegers<quint32, qint32>(values, bytes, bigEndian);
    addIntegers<quint64, qint64>(values, bytes, bigEndian);
    values.append({QStringLiteral("float"), floatText<float, quint32>(bytes, bigEndian, 9)});
    values.append({QStringLiteral("double"), floatText<double, quint64>(bytes, bigEndian, 17)});
    values.append({QStringLiteral("UTF-8"), characterOf(bytes, TextCodec::Utf8)});
    values.append({QStringLiteral("GB18030"), characterOf(bytes, TextCodec::Gb18030)});
    values.append({QStringLiteral("时间戳(32位)"), timeText(bytes, bigEndian)});
    return values;
}

} // namespace HexInspector
