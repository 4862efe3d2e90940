#pragma once

// The picture formats, as one table: those that a board announces by a code of the
// link, and those that the user chooses instead. Adding a format is adding a row.

#include "pixeldecoder.h"

#include <QString>

#include <array>

struct PixelFormat
{
    static constexpr int firstChoice = 256; // above the codes of the link, which are bytes

    int code; // on the link, or firstChoice and the number that the settings keep
    QString name;
    int bytesPerPixel;           // 0: always a picture file
    bool mayBeFile;              // shorter data is a picture file
    const char *fileType;        // as QImageReader names it; null: any
    PixelDecoder::Decode decode; // null for picture files
    PixelDecoder::BytesOf bytesOf;

    static const std::array<PixelFormat, 16> &all();
    static const PixelFormat *find(int code); // null for an unknown code

    bool isAnnounced() const { return code < firstChoice; }
    // The number of a format that the user may choose, from 1 on.
    int choice() const { return code - firstChoice; }

    // Whether data of that length are a picture file. The sides are 0 where unknown.
    bool isFile(qint64 size, int width, int height) const;
    // A pixel's bytes as they came, for the user; empty where none did. "--" stands for
    // a byte that is missing.
    QString rawText(const PixelDecoder::Source &source, int x, int y) const;
};

// What a device's frames are.
struct ImageRecord
{
    quint16 format = Rgb565; // a code of PixelFormat
    quint16 width = 320;
    quint16 height = 240;

    enum { Jpg = 1, Bmp = 2, Png = 3, Rgb565 = 4, Rgb888 = 5, Yuv422 = 7 };
    static QString formatName(int format); // that of Jpg for unknown codes

    // In the format that the user has chosen, by its number; 0 or unknown: as it is.
    ImageRecord readAs(int choice) const;
};
