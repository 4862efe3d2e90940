#pragma once

// What a session file says of itself beside samples, events and runs.

#include "pidframe.h"

#include <QString>
#include <QtGlobal>

#include <array>
#include <optional>

struct PidSessionInfo
{
    using Texts = std::array<QString, PidFrame::channels>;

    Texts names; // of the channels; empty for the given ones
    Texts units;
    std::optional<qint64> originUs; // the time that counts as 0
    qint64 madeUs = 0;              // since 1970
    QString program;                // name and version of what made the file
};
