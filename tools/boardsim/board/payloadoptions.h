#pragma once

// Which payload a board sends, and in which encoding it writes its texts.

#include "commandline.h"
#include "payload.h"

#include <limits>

namespace Boardsim {

struct PayloadOptions
{
    Encoding encoding = Encoding::Utf8;
    quint32 seed = 1;

    void addTo(CommandLine &line)
    {
        line.addTexts("encoding", "name", QStringLiteral("utf8 (default), gb18030, ascii or binary."),
                      [this](const QString &name) { return encodingFromName(name, &encoding); });
        line.addNumber("seed", "n", QStringLiteral("Seed of what is random"), &seed, 0,
                       std::numeric_limits<quint32>::max());
    }
};

// How much is sent to each host.
inline void addTotal(CommandLine &line, qint64 *bytes)
{
    line.addNumber("total", "bytes", QStringLiteral("Bytes for each host; -1 without end"), bytes, -1,
                   std::numeric_limits<qint64>::max());
}

} // namespace Boardsim
