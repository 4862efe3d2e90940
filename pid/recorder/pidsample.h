#pragma once

// One report of an actual value, with the target at that time.

#include <QtGlobal>

struct PidSample
{
    qint64 us; // since 1970
    qint32 target;
    qint32 actual;
};
Q_DECLARE_TYPEINFO(PidSample, Q_PRIMITIVE_TYPE);
