#include "pixelformat.h"

#include <algorithm>

const std::array<PixelFormat, 6> &PixelFormat::all()
{
    static const std::array<PixelFormat, 6> formats{{
        {ImageRecord::Jpg, QLatin1String("*.jpg"), 3, true, PixelDecoder::rgb888},
        {ImageRecord::Bmp, QLatin1String("*.bmp"), 2, false, PixelDecoder::rgb565},
        {ImageRecord::Png, QLatin1String("*.png"), 3, true, PixelDecoder::rgb888},
        {ImageRecord::Rgb565, QLatin1String("RGB565"), 2, false, PixelDecoder::rgb565},
        {ImageRecord::Rgb888, QLatin1String("RGB888"), 3, false, PixelDecoder::rgb888},
        {ImageRecord::Yuv422, QLatin1String("YUV422"), 2, false, PixelDecoder::yuv422},
    }};
    return formats;
}

const PixelFormat *PixelFormat::find(int code)
{
    const auto format = std::find_if(all().begin(), all().end(),
                                     [code](const PixelFormat &entry) { return entry.code == code; });
    return format == all().end() ? nullptr : &*format;
}

QString ImageRecord::formatName(int format)
{
    const PixelFormat *const known = PixelFormat::find(format);
    return (known ? *known : PixelFormat::all().front()).name;
}
