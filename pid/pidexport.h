#pragma once

// The text of exported curves: one table for each channel, as spreadsheets read
// it.

#include <QVector>

#include <functional>

class QIODevice;

namespace PidExport {

// The points of one channel. An actual value is taken at the target's index;
// past the end of the actual values it is the last one.
struct Channel
{
    int points = 0; // of the target curve
    std::function<double(int)> target;
    std::function<double(int)> actual;
};

// Writes the tables to an open device, as GB18030. False where the device did
// not take all of it.
bool write(QIODevice *device, const QVector<Channel> &channels);

} // namespace PidExport
