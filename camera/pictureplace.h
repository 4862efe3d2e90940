#pragma once

// Where a picture lies in the place that is given to it: in its natural size, fitted,
// or zoomed and moved by the user. Maps between both. Knows no widget and no picture
// but its size. Positions are those of the widget; pixels those of the picture as it
// is shown, before it is mirrored.

#include <QPointF>
#include <QRectF>
#include <QSize>

#include <optional>

class PicturePlace
{
public:
    // The place, and where a picture in its natural size begins in it.
    struct Room
    {
        QRect place;
        QPoint natural;
        QSize picture;
    };

    void showNatural() { m_mode = Natural; }
    void fit() { m_mode = Fit; }
    bool isZoomed() const { return m_mode == Zoomed; }

    // One of the steps from an eighth to 32 times, so that the pixel at the position
    // stays where it is.
    void zoomAt(const QPointF &position, int steps, const Room &room);
    void moveBy(const QPointF &distance, const Room &room);

    double scale(const Room &room) const;
    QRectF target(const Room &room) const;
    std::optional<QPoint> pixelAt(const QPointF &position, const Room &room) const;

private:
    enum Mode { Natural, Fit, Zoomed };

    Mode m_mode = Natural;
    double m_scale = 1;
    QPointF m_center; // pixel in the middle of the place, zoomed
};
