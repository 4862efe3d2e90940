#pragma once

// What a receive display shows besides the text, and how it shows the text.

#include "linestamp.h"
#include "terminaltext.h"

struct ViewOptions
{
    LineStamp::Time time = LineStamp::Time::None;
    bool copiesStamps = false; // copied text has time and direction of each line
    bool savesStamps = false;  // saved text, too
    bool showsSent = false;    // what was sent is among the lines
    TerminalText::Options text;
};
