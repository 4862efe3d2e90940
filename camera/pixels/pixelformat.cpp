#include "pixelformat.h"

#include <QStringList>

#include <algorithm>
#include <array>

using namespace PixelDecoder;

// The numbers of the choices are kept by the settings: they stay with their formats.
const std::array<PixelFormat, 16> &PixelFormat::all()
{
    constexpr int own = firstChoice;
    static const std::array<PixelFormat, 16> formats{{
        {ImageRecord::Jpg, QStringLiteral("*.jpg"), 3, true, nullptr, rgb888, bytesOfRgb888},
        {ImageRecord::Bmp, QStringLiteral("*.bmp"), 2, false, nullptr, rgb565, bytesOfRgb565},
        {ImageRecord::Png, QStringLiteral("*.png"), 3, true, nullptr, rgb888, bytesOfRgb888},
        {ImageRecord::Rgb565, QStringLiteral("RGB565"), 2, false, nullptr, rgb565, bytesOfRgb565},
        {ImageRecord::Rgb888, QStringLiteral("RGB888"), 3, false, nullptr, rgb888, bytesOfRgb888},
        {ImageRecord::Yuv422, QStringLiteral("YUV422"), 2, false, nullptr, yuv422, bytesOfYuv422},
        {own + 1, QStringLiteral("GRAY8"), 1, false, nullptr, gray8, bytesOfGray8},
        {own + 2, QStringLiteral("YUV422 YUYV"), 2, false, nullptr, yuyv, bytesOfYuyv},
        {own + 3, QStringLiteral("YUV422 UYVY"), 2, false, nullptr, uyvy, bytesOfUyvy},
        {own + 4, QStringLiteral("RGB565 小端"), 2, false, nullptr, rgb565Little, bytesOfRows565},
        {own + 5, QStringLiteral("RGB565 大端"), 2, false, nullptr, rgb565Big, bytesOfRows565},
        {own + 6, QStringLiteral("RGB888"), 3, false, nullptr, rgb888, bytesOfRgb888},
        {own + 7, QStringLiteral("BGR888"), 3, false, nullptr, bgr888, bytesOfRgb888},
        {own + 8, QStringLiteral("JPEG"), 0, true, "jpeg", nullptr, nullptr},
        {own + 9, QStringLiteral("PNG"), 0, true, "png", nullptr, nullptr},
        {own + 10, QStringLiteral("BMP"), 0, true, "bmp", nullptr, nullptr},
    }};
    return formats;
}

const PixelFormat *PixelFormat::find(int code)
{
    const auto format = std::find_if(all().begin(), all().end(),
                                     [code](const PixelFormat &entry) { return entry.code == code; });
    return format == all().end() ? nullptr : &*format;
}

bool PixelFormat::isFile(qint64 size, int width, int height) const
{
    if (!decode)
        return true;
    return mayBeFile && (imageBytes(width, height) == 0 || size < qint64(width) * height * bytesPerPixel);
}

QString PixelFormat::rawText(const Source &source, int x, int y) const
{
    if (!bytesOf)
        return {};
    static const std::array<QString, 3> parts{QStringLiteral("Y "), QStringLiteral("U "),
                                              QStringLiteral("V ")};
    const PixelBytes bytes = bytesOf(source, x, y);
    QStringList texts;
    bool isThere = false;
    for (int k = 0; k < bytes.count; ++k) {
        const qsizetype at = bytes.at.at(static_cast<size_t>(k));
        const bool has = at >= 0 && at < source.size;
        const QString hex =
            has ? QStringLiteral("%1").arg(source.bytes[at], 2, 16, QLatin1Char('0')).toUpper()
                : QStringLiteral("--");
        texts.append(bytes.isYuv ? parts.at(static_cast<size_t>(k)) + hex : hex);
        isThere = isThere || has;
    }
    return isThere ? texts.join(QLatin1Char(' ')) : QString();
}

QString ImageRecord::formatName(int format)
{
    const PixelFormat *const known = PixelFormat::find(format);
    return (known ? *known : PixelFormat::all().front()).name;
}

ImageRecord ImageRecord::readAs(int choice) const
{
    const PixelFormat *const chosen =
        choice > 0 ? PixelFormat::find(PixelFormat::firstChoice + choice) : nullptr;
    return {chosen ? static_cast<quint16>(chosen->code) : format, width, height};
}
