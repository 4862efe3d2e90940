#pragma once

// The health of a camera link as the texts of two tables, for the screen and for a
// file. Tells the time of faults by a clock that is passed in.

#include "camerahealth.h"

#include <QDateTime>
#include <QStringList>

namespace HealthTable {

// The first row has the titles, and the second the total. Frames, unless a title has
// another unit.
QVector<QStringList> counts(const CameraHealth &health);
// The same in fewer columns: the rates as "now (min~max)".
QVector<QStringList> summary(const CameraHealth &health);
// The newest first. now: at which health.now() was.
QVector<QStringList> faults(const CameraHealth &health, const QDateTime &now);
// Both, as fields between commas in UTF-8 with a byte order mark.
QByteArray csv(const CameraHealth &health, const QDateTime &now);

} // namespace HealthTable
