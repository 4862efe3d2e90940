#include "receivedname.h"

#include "textcodec.h"

#include <QRegularExpression>

namespace {

constexpr int kMaxBytes = 200; // in UTF-8; systems allow 255, with what is added
constexpr int kMaxSuffix = 20; // characters; longer ones name no kind of file

bool isImpossible(QChar c)
{
    return c < QLatin1Char(' ') || c == QChar(0x7F) || QStringLiteral("<>:\"/\\|?*").contains(c) ||
           c.category() == QChar::Other_Control || c.category() == QChar::Other_Format ||
           c.category() == QChar::Separator_Line || c.category() == QChar::Separator_Paragraph ||
           c == QChar::ReplacementCharacter;
}

// Names that stand for devices, whatever the suffix.
bool isDevice(const QString &name)
{
    static const QRegularExpression form(
        QStringLiteral("^(CON|PRN|AUX|NUL|CONIN\\$|CONOUT\\$|(COM|LPT)[0-9\u00B9\u00B2\u00B3])\\s*(\\..*)?$"),
        QRegularExpression::CaseInsensitiveOption);
    return form.match(name).hasMatch();
}

int suffixAt(const QString &name)
{
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    return dot <= 0 || name.size() - dot > kMaxSuffix ? name.size() : dot;
}

} // namespace

QString ReceivedName::plain(const QByteArray &sent)
{
    QString name = TextCodec::decodeFile(sent);
    const int slash = std::max(name.lastIndexOf(QLatin1Char('/')), name.lastIndexOf(QLatin1Char('\\')));
    name.remove(0, slash + 1);
    for (QChar &c : name)
        c = isImpossible(c) ? QLatin1Char('_') : c;
    // Systems drop these at an end without a word.
    while (name.endsWith(QLatin1Char('.')) || name.endsWith(QLatin1Char(' ')))
        name.chop(1);
    while (name.startsWith(QLatin1Char(' ')))
        name.remove(0, 1);
    if (name.isEmpty())
        return name;
    if (name.startsWith(QLatin1Char('.')) || isDevice(name)) // hidden or no file at all
        name.prepend(QLatin1Char('_'));
    const QString suffix = name.mid(suffixAt(name));
    QString stem = name.left(suffixAt(name));
    while (!stem.isEmpty() && (stem + suffix).toUtf8().size() > kMaxBytes)
        stem.chop(stem.size() > 1 && stem.at(stem.size() - 1).isLowSurrogate() ? 2 : 1);
    return stem + suffix;
}

QString ReceivedName::numbered(const QString &name, int number)
{
    if (number < 2)
        return name;
    QString result = name;
    return result.insert(suffixAt(name), QStringLiteral(" (%1)").arg(number));
}

QString ReceivedName::incomplete(const QString &name)
{
    return name + QStringLiteral(".part");
}
