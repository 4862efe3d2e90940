#pragma once

// What is known of one channel: its parameters as last sent or reported.

#include <QtGlobal>

struct PidChannelParams
{
    float p = 0;
    float i = 0;
    float d = 0;
    qint32 target = 0;
    qint32 period = 0; // as last reported
};
