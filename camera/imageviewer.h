#pragma once

// The pictures of the camera page: one or two, each in its natural size and
// clipped to its place. Knows no stream and no format.

#include <QPixmap>
#include <QWidget>

#include <array>

class ImageViewer : public QWidget
{
    Q_OBJECT

public:
    explicit ImageViewer(QWidget *parent = nullptr);

    // A null pixmap is ignored; device 1 is the second picture, any other the first.
    void setImage(int device, const QPixmap &image);
    const QPixmap &image(int device) const { return m_images.at(device == 1 ? 1 : 0); }

    int displayCount() const { return m_displayCount; }
    void setDisplayCount(int count); // 1 or 2

    // Shown below the text that stands for a missing picture.
    void setHint(const QString &hint);

    QSize sizeHint() const override { return {640, 360}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void paintImage(QPainter &painter, int device, const QRect &place, int x, const QString &missing) const;

    std::array<QPixmap, 2> m_images;
    int m_displayCount = 1;
    QString m_hint;
};
