#pragma once

// The pictures of the camera page: one or two, each in its natural size and clipped
// to its place. The user may fit, zoom, move and mirror them, reads the pixel under the
// pointer, and marks a region with Shift. Knows no stream and no format.

#include "pictureplace.h"

#include <QPixmap>
#include <QWidget>

#include <array>
#include <functional>

class ImageViewer : public QWidget
{
    Q_OBJECT

public:
    enum Mirror { LeftRight = 1, UpDown = 2 };

    explicit ImageViewer(QWidget *parent = nullptr);

    // What a pixel of a picture was made of, for the user; empty where that says nothing.
    using RawText = std::function<QString(const QPoint &pixel)>;

    // A null pixmap is ignored; device 1 is the second picture, any other the first.
    void setImage(int device, const QPixmap &image, const RawText &rawText = {});
    const QPixmap &image(int device) const { return m_images.at(device == 1 ? 1 : 0); }

    int displayCount() const { return m_displayCount; }
    void setDisplayCount(int count); // 1 or 2

    // Fitted to their places, or in their natural size; ends what the user zoomed.
    void setFitted(bool fitted);
    void setMirror(int bits); // of Mirror

    // Shown below the text that stands for a missing picture.
    void setHint(const QString &hint);

    // The marked part of a picture, in its pixels; null where there is none, and always
    // within the picture.
    QRect region() const;
    int regionDevice() const { return m_regionDevice; } // 0 where there is none
    void clearRegion();

    // The pixel at a position, for the user; empty where there is none.
    QString pixelText(const QPoint &position) const;

    QSize sizeHint() const override { return {640, 360}; }

signals:
    void pictureChanged(int device);
    void regionChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    // What is visible of a picture, scaled down: each picture is scaled once, and not
    // whenever a tip or a menu has covered it.
    struct Reduced
    {
        QPixmap picture;
        QRectF target;
        QRect place;
        int mirror = 0;
    };

    void restore(int device);
    PicturePlace::Room roomOf(int device) const;
    int deviceAt(const QPoint &position) const;
    void paintImage(QPainter &painter, int device, const QString &missing);
    void paintReduced(QPainter &painter, int device, const PicturePlace::Room &room);
    void paintPicture(QPainter &painter, int device, const PicturePlace::Room &room) const;
    void paintRegion(QPainter &painter) const;
    QPoint mirrored(int device, const QPoint &pixel) const;
    QPoint pixelNear(int device, const QPointF &position) const;
    void markTo(const QPoint &position);
    void showPixel(const QPoint &position);

    std::array<QPixmap, 2> m_images;
    std::array<PicturePlace, 2> m_places;
    std::array<Reduced, 2> m_reduced;
    std::array<RawText, 2> m_rawTexts;
    int m_displayCount = 1;
    bool m_isFitted = false;
    int m_mirror = 0;
    QString m_hint;
    QPoint m_dragged; // where the pointer was last
    int m_regionDevice = 0;
    QRect m_region;  // in pixels of the picture; null: none
    QPoint m_corner; // where it began
    bool m_isMarking = false;
};
