#include "answertext.h"

#include "escapes.h"
#include "hextext.h"
#include "textcodec.h"

namespace {

int digitValue(QChar digit)
{
    return QString(digit).toInt(nullptr, 16);
}

bool isGroupDigit(const QString &text, int at)
{
    return at < text.size() && text.at(at) >= QLatin1Char('0') && text.at(at) <= QLatin1Char('9');
}

// Literal bytes that follow each other are one part.
void addBytes(QVector<AnswerText::Part> *parts, const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    if (parts->isEmpty() || parts->last().group >= 0)
        parts->append(AnswerText::Part());
    parts->last().bytes += bytes;
}

void addGroup(QVector<AnswerText::Part> *parts, QChar digit)
{
    parts->append({{}, digit.digitValue()});
}

} // namespace

QVector<AnswerText::Part> AnswerText::textParts(const QString &text, int codecIndex, bool hasGroups,
                                                QString *fault)
{
    QVector<Part> parts;
    QString literal; // not encoded yet
    const auto flush = [&] {
        addBytes(&parts, TextCodec::encode(literal, codecIndex));
        literal.clear();
    };
    for (int i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        if (character == QLatin1Char('\\')) {
            const int begin = i;
            const int byte = Escapes::byteAt(text, &i);
            if (byte < 0) {
                *fault = QStringLiteral("第%1个字符处：“\\”后应为 r、n、t、0、xHH 或 \\").arg(begin + 1);
                return {};
            }
            flush();
            addBytes(&parts, QByteArray(1, static_cast<char>(byte)));
        } else if (hasGroups && character == QLatin1Char('$') && isGroupDigit(text, i + 1)) {
            flush();
            addGroup(&parts, text.at(++i));
        } else {
            literal += character;
            if (hasGroups && character == QLatin1Char('$') && text.midRef(i + 1, 1) == QLatin1String("$"))
                ++i;
        }
    }
    flush();
    return parts;
}

QVector<AnswerText::Part> AnswerText::hexParts(const QString &text, QString *fault)
{
    QVector<Part> parts;
    for (int i = 0; i < text.size(); ++i) {
        if (text.at(i).isSpace())
            continue;
        if (text.at(i) == QLatin1Char('$') && isGroupDigit(text, i + 1)) {
            addGroup(&parts, text.at(++i));
        } else if (HexText::isDigit(text.at(i)) && i + 1 < text.size() && HexText::isDigit(text.at(i + 1))) {
            const int byte = digitValue(text.at(i)) * 16 + digitValue(text.at(i + 1));
            addBytes(&parts, QByteArray(1, static_cast<char>(byte)));
            ++i;
        } else {
            *fault = QStringLiteral("第%1个字符处：应为两位十六进制数或 $0 至 $9").arg(i + 1);
            return {};
        }
    }
    return parts;
}

AnswerText::Masked AnswerText::maskedBytes(const QString &text, QString *fault)
{
    Masked masked;
    bool isInGroup = false;
    const auto isDigit = [&](int at) {
        return at < text.size() && (text.at(at) == QLatin1Char('?') || HexText::isDigit(text.at(at)));
    };
    const auto fail = [&](const QString &reason) {
        *fault = reason;
        return Masked();
    };
    for (int i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        if (character.isSpace())
            continue;
        if (character == QLatin1Char('(') && !isInGroup) {
            isInGroup = true;
            masked.groups.append({masked.bytes.size(), 0});
        } else if (character == QLatin1Char(')') && isInGroup) {
            isInGroup = false;
            masked.groups.last().size = masked.bytes.size() - masked.groups.last().begin;
        } else if (isDigit(i) && isDigit(i + 1)) {
            int byte = 0;
            int mask = 0;
            for (const QChar digit : {text.at(i), text.at(i + 1)}) {
                const bool isWild = digit == QLatin1Char('?');
                byte = byte * 16 + (isWild ? 0 : digitValue(digit));
                mask = mask * 16 + (isWild ? 0 : 15);
            }
            masked.bytes += static_cast<char>(byte);
            masked.mask += static_cast<char>(mask);
            ++i;
        } else {
            return fail(QStringLiteral("第%1个字符处：应为两位十六进制数，未知的数位写“?”").arg(i + 1));
        }
    }
    if (isInGroup)
        return fail(QStringLiteral("缺少右括号“)”"));
    if (!masked.bytes.isEmpty() && !masked.mask.contains('\xFF'))
        return fail(QStringLiteral("至少要有一个确定的字节"));
    return masked;
}
