#pragma once

// The picture formats of the camera link, as one table: adding a format is adding
// a row.

#include "pixeldecoder.h"

#include <QString>

#include <array>

struct PixelFormat
{
    int code; // on the link
    QLatin1String name;
    int bytesPerPixel;
    bool mayBeFile; // shorter data is a picture file
    PixelDecoder::Decode decode;

    static const std::array<PixelFormat, 6> &all();
    static const PixelFormat *find(int code); // null for an unknown code
};

// What a device's frames are.
struct ImageRecord
{
    quint8 format = Rgb565;
    quint16 width = 320;
    quint16 height = 240;

    enum { Jpg = 1, Bmp = 2, Png = 3, Rgb565 = 4, Rgb888 = 5, Yuv422 = 7 };
    static QString formatName(int format); // that of Jpg for unknown codes
};
