#include "escapes.h"

#include "hextext.h"
#include "textcodec.h"

namespace {

// Of one character behind the backslash; -1 for none of these.
int simpleByte(QChar character)
{
    switch (character.unicode()) {
    case 'r':
        return '\r';
    case 'n':
        return '\n';
    case 't':
        return '\t';
    case '0':
        return 0;
    case '\\':
        return '\\';
    default:
        return -1;
    }
}

} // namespace

int Escapes::byteAt(const QString &text, int *at)
{
    const int begin = (*at)++;
    const QChar kind = text.size() > *at ? text.at(*at) : QChar();
    if (kind != QLatin1Char('x'))
        return simpleByte(kind);
    if (text.size() <= begin + 3 || !HexText::isDigit(text.at(begin + 2)) ||
        !HexText::isDigit(text.at(begin + 3)))
        return -1;
    *at = begin + 3;
    return text.midRef(begin + 2, 2).toInt(nullptr, 16);
}

QByteArray Escapes::encode(const QString &text, int codecIndex, QString *wrong)
{
    QByteArray bytes;
    int start = 0; // of the text that has not been encoded yet
    for (int at = text.indexOf(QLatin1Char('\\')); at >= 0; at = text.indexOf(QLatin1Char('\\'), start)) {
        bytes += TextCodec::encode(text.mid(start, at - start), codecIndex);
        int last = at;
        const int byte = byteAt(text, &last);
        if (byte < 0) {
            *wrong = text.mid(at, text.mid(at + 1, 1) == QLatin1String("x") ? 4 : 2);
            return {};
        }
        bytes += static_cast<char>(byte);
        start = last + 1;
    }
    return bytes + TextCodec::encode(text.mid(start), codecIndex);
}
