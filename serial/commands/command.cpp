#include "command.h"

#include "sendtext.h"

#include <tuple>

QByteArray Command::bytes(int codecIndex, QString *fault) const
{
    SendText format;
    format.isHex = isHex;
    format.addsNewLine = lineEnd != NoLineEnd;
    if (format.addsNewLine)
        format.lineEnd = static_cast<SendText::LineEnd>(lineEnd - CrLf);
    format.hasEscapes = !isHex;
    format.codecIndex = codecIndex;
    const SendText::Encoded encoded = format.encode(text);
    if (!encoded.wrongEscape.isEmpty())
        *fault = QStringLiteral("转义“%1”无效").arg(encoded.wrongEscape);
    else if (encoded.ignored > 0)
        *fault = QStringLiteral("十六进制数据不完整或包含无效字符");
    else if (text.isEmpty() || encoded.bytes.isEmpty()) // a bare line end is typed as such
        *fault = QStringLiteral("没有要发送的数据");
    return fault->isEmpty() ? encoded.bytes : QByteArray();
}

bool Command::operator==(const Command &other) const
{
    const auto all = [](const Command &command) {
        return std::tie(command.name, command.text, command.note, command.isTicked, command.isHex,
                        command.lineEnd, command.delayMs, command.answer, command.isExpression,
                        command.timeoutMs, command.otherwise, command.repeats);
    };
    return all(*this) == all(other);
}
