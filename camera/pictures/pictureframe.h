#pragma once

// A frame as it came, and what is needed to make a picture of it.

#include "pixelformat.h"

#include <QByteArray>
#include <QString>

#include <optional>

struct CameraFrameData
{
    QByteArray data;
    std::optional<ImageRecord> record; // none: an image file
    bool bigEndian = false;
    QString sender = {};
    qint64 offset = 0; // for the signals only
};
