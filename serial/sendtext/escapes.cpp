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

QByteArray Escapes::encode(const QString &text, int codecIndex, QString *wrong)
{
    QByteArray bytes;
    int start = 0; // of the text that has not been encoded yet
    for (int at = text.indexOf(QLatin1Char('\\')); at >= 0; at = text.indexOf(QLatin1Char('\\'), start)) {
        bytes += TextCodec::encode(text.mid(start, at - start), codecIndex);
        const QChar kind = text.size() > at + 1 ? text.at(at + 1) : QChar();
        const int byte = simpleByte(kind);
        if (byte >= 0) {
            bytes += static_cast<char>(byte);
            start = at + 2;
        } else if (kind == QLatin1Char('x') && text.size() > at + 3 && HexText::isDigit(text.at(at + 2)) &&
                   HexText::isDigit(text.at(at + 3))) {
            bytes += static_cast<char>(text.midRef(at + 2, 2).toInt(nullptr, 16));
            start = at + 4;
        } else {
            *wrong = text.mid(at, kind == QLatin1Char('x') ? 4 : 2);
            return {};
        }
    }
    return bytes + TextCodec::encode(text.mid(start), codecIndex);
}
