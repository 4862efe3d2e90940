#include "pictureplace.h"

#include <algorithm>
#include <cmath>

namespace {
// Whole pixels from 1 on.
constexpr double kScales[] = {0.125, 0.25, 0.5, 1, 2, 3, 4, 6, 8, 12, 16, 24, 32};
constexpr double kInSight = 16; // pixels of the screen
constexpr int kScaleCount = int(sizeof kScales / sizeof *kScales);

double stepped(double scale, int steps)
{
    const double *const end = kScales + kScaleCount;
    // From between two steps, the next one in the direction.
    const auto at = steps > 0 ? std::upper_bound(kScales, end, scale) - 1 - kScales
                              : std::lower_bound(kScales, end, scale) - kScales;
    return kScales[std::clamp(int(at) + steps, 0, kScaleCount - 1)];
}
} // namespace

double PicturePlace::scale(const Room &room) const
{
    if (m_mode == Natural || room.picture.isEmpty())
        return 1;
    if (m_mode == Zoomed)
        return m_scale;
    return std::min(double(room.place.width()) / room.picture.width(),
                    double(room.place.height()) / room.picture.height());
}

QRectF PicturePlace::target(const Room &room) const
{
    const double factor = scale(room);
    const QSizeF size = QSizeF(room.picture) * factor;
    if (m_mode == Natural)
        return {room.natural, size};
    const QPointF middle = QRectF(room.place).center();
    if (m_mode == Fit)
        return {middle - QPointF(size.width() / 2, size.height() / 2), size};
    const QPointF begin = middle - m_center * factor;
    return {QPointF(std::round(begin.x()), std::round(begin.y())), size};
}

void PicturePlace::zoomAt(const QPointF &position, int steps, const Room &room)
{
    const double before = scale(room);
    const QPointF pixel = (position - target(room).topLeft()) / before;
    m_scale = stepped(before, steps);
    m_mode = Zoomed;
    m_center = pixel - (position - QRectF(room.place).center()) / m_scale;
    moveBy({}, room);
}

// Some of the picture always stays in sight.
void PicturePlace::moveBy(const QPointF &distance, const Room &room)
{
    const QPointF middle = QRectF(room.place).center();
    const double factor = scale(room);
    if (m_mode != Zoomed) {
        m_center = (middle - target(room).topLeft()) / factor;
        m_scale = factor;
        m_mode = Zoomed;
    }
    m_center -= distance / factor;
    const double outX = std::max(0.0, room.place.width() / 2.0 - kInSight) / factor;
    const double outY = std::max(0.0, room.place.height() / 2.0 - kInSight) / factor;
    m_center = {std::clamp(m_center.x(), -outX, room.picture.width() + outX),
                std::clamp(m_center.y(), -outY, room.picture.height() + outY)};
}

std::optional<QPoint> PicturePlace::pixelAt(const QPointF &position, const Room &room) const
{
    const QPointF pixel = (position - target(room).topLeft()) / scale(room);
    const QPoint whole(int(std::floor(pixel.x())), int(std::floor(pixel.y())));
    return QRect(QPoint(), room.picture).contains(whole) ? std::optional<QPoint>(whole) : std::nullopt;
}
