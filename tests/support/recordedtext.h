#pragma once

#include "receivedtext.h"

// All that a display has recorded; "(failed)" where it cannot be read back.
inline QString recordedText(const ReceivedText &received)
{
    QString all;
    ReceivedText::Reader reader(received);
    for (QString text = reader.next(); !text.isEmpty(); text = reader.next())
        all += text;
    return reader.failed() ? QStringLiteral("(failed)") : all;
}
