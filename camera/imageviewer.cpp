#include "imageviewer.h"

#include <QPainter>

namespace {

const QColor kMissingColor(0x85, 0x95, 0x9B);
constexpr int kMissingPixels = 13;

} // namespace

ImageViewer::ImageViewer(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("imageViewer"));
    setAccessibleName(QStringLiteral("图像显示区域"));
    setMinimumSize(160, 120);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void ImageViewer::setImage(int device, const QPixmap &image)
{
    if (image.isNull())
        return;
    m_images.at(device == 1 ? 1 : 0) = image;
    update();
}

void ImageViewer::setDisplayCount(int count)
{
    m_displayCount = count == 2 ? 2 : 1;
    update();
}

void ImageViewer::setHint(const QString &hint)
{
    m_hint = hint;
    update();
}

void ImageViewer::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.fillRect(rect(), Qt::white);
    QFont font = painter.font();
    font.setPixelSize(kMissingPixels);
    painter.setFont(font);
    painter.setPen(kMissingColor);
    if (m_displayCount == 1) {
        paintImage(painter, 0, rect(), (width() - m_images[0].width()) / 2, QStringLiteral("图像显示区域"));
        return;
    }
    const QRect left(0, 0, width() / 2, height());
    const QRect right(width() / 2, 0, width() - width() / 2, height());
    paintImage(painter, 0, left, width() / 4 - m_images[0].width() / 2, QStringLiteral("图像1显示区域"));
    paintImage(painter, 1, right, static_cast<int>(width() * 0.75 - m_images[1].width() / 2),
               QStringLiteral("图像2显示区域"));
}

void ImageViewer::paintImage(QPainter &painter, int device, const QRect &place, int x,
                             const QString &missing) const
{
    const QPixmap &image = m_images.at(static_cast<size_t>(device));
    if (image.isNull()) {
        painter.drawText(place, Qt::AlignCenter, missing);
        painter.drawText(place.adjusted(8, place.height() / 2 + painter.fontMetrics().height(), -8, 0),
                         Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, m_hint);
        return;
    }
    painter.setClipRect(place);
    painter.drawPixmap(x, (height() - image.height()) / 2, image);
    painter.setClipping(false);
}
