#pragma once

// QCustomPlot, whose header iterates with a keyword that our build switches
// off. Include this instead of it.

#ifdef QT_NO_FOREACH
#define foreach(variable, container) for (variable : container)
#endif
#include <qcustomplot.h>
#ifdef QT_NO_FOREACH
#undef foreach
#endif
