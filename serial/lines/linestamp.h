#pragma once

// What stands beside a line: its time and whether it was received or sent, as
// text.

#include "linestore.h"

struct LineStamp
{
    enum class Time { None, Clock, SincePrevious, SinceOpening };

    Time time = Time::None;
    bool hasDirection = false; // a sent line then has the time of day at least
    qint64 openingMs = 0;      // from which SinceOpening counts; since the epoch

    bool isEmpty() const { return time == Time::None && !hasDirection; }
    // Of the widest one.
    int columns() const;
    // "12:34:56.789", "+0.120" or "3.456" seconds, and "收" or "发". previousMs is
    // the arrival of the line before.
    QString text(const LineStore::Line &line, qint64 previousMs) const;
    // In front of a line's text: "[12:34:56.789 收] ".
    QString prefix(const LineStore::Line &line, qint64 previousMs) const;
};
