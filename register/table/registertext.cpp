#include "registertext.h"

#include "textcodec.h"

#include <QTextCodec>

namespace {

constexpr int kTestedBytes = 1024 * 1024; // more than most full tables have

bool isUtf8(const QByteArray &content)
{
    QTextCodec::ConverterState state;
    QTextCodec::codecForName("UTF-8")->toUnicode(content.constData(), qMin(content.size(), kTestedBytes),
                                                 &state);
    const bool isCut = content.size() > kTestedBytes; // possibly within a character
    return state.invalidChars == 0 && (isCut || state.remainingChars == 0);
}

} // namespace

RegisterText::RegisterText(const QByteArray &content)
    : bytes(content)
    , codec(TextCodec::Utf8)
{
    if (content.startsWith("\xEF\xBB\xBF"))
        bytes.remove(0, 3);
    else if (content.startsWith("\xFF\xFE") || content.startsWith("\xFE\xFF"))
        bytes = QTextCodec::codecForName("UTF-16")->toUnicode(content).toUtf8();
    else if (!isUtf8(content))
        codec = TextCodec::Gb18030;
}

QString RegisterText::decoded(const QByteArray &part) const
{
    return TextCodec::decode(part, codec);
}
