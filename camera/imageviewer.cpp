#include "imageviewer.h"

#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>

namespace {

const QColor kMissingColor(0x85, 0x95, 0x9B);
constexpr int kMissingPixels = 13;
constexpr int kWheelStep = 120; // eighths of a degree

} // namespace

ImageViewer::ImageViewer(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("imageViewer"));
    setAccessibleName(QStringLiteral("图像显示区域"));
    setMinimumSize(160, 120);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
}

void ImageViewer::setImage(int device, const QPixmap &image)
{
    if (image.isNull())
        return;
    QPixmap &shown = m_images.at(device == 1 ? 1 : 0);
    const bool isOther = shown.size() != image.size();
    shown = image;
    m_reduced.at(device == 1 ? 1 : 0) = Reduced();
    if (isOther) // what was zoomed is no part of it
        restore(device == 1 ? 1 : 0);
    update();
    if (underMouse() && QToolTip::isVisible())
        showPixel(mapFromGlobal(QCursor::pos()));
}

void ImageViewer::setDisplayCount(int count)
{
    m_displayCount = count == 2 ? 2 : 1;
    update();
}

void ImageViewer::setFitted(bool fitted)
{
    m_isFitted = fitted;
    restore(0);
    restore(1);
    update();
}

void ImageViewer::restore(int device)
{
    if (m_isFitted)
        m_places.at(size_t(device)).fit();
    else
        m_places.at(size_t(device)).showNatural();
}

void ImageViewer::setMirror(int bits)
{
    m_mirror = bits;
    update();
}

void ImageViewer::setHint(const QString &hint)
{
    m_hint = hint;
    update();
}

// ---- places

PicturePlace::Room ImageViewer::roomOf(int device) const
{
    const QPixmap &image = m_images.at(size_t(device));
    const int top = (height() - image.height()) / 2;
    const int half = image.width() / 2;
    if (m_displayCount == 1)
        return {rect(), {(width() - image.width()) / 2, top}, image.size()};
    if (device == 0)
        return {{0, 0, width() / 2, height()}, {width() / 4 - half, top}, image.size()};
    return {{width() / 2, 0, width() - width() / 2, height()},
            {static_cast<int>(width() * 0.75 - half), top},
            image.size()};
}

int ImageViewer::deviceAt(const QPoint &position) const
{
    return m_displayCount == 2 && position.x() >= width() / 2 ? 1 : 0;
}

// ---- painting

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
        paintImage(painter, 0, QStringLiteral("图像显示区域"));
        return;
    }
    paintImage(painter, 0, QStringLiteral("图像1显示区域"));
    paintImage(painter, 1, QStringLiteral("图像2显示区域"));
}

void ImageViewer::paintImage(QPainter &painter, int device, const QString &missing)
{
    const QPixmap &image = m_images.at(size_t(device));
    const PicturePlace::Room room = roomOf(device);
    if (image.isNull()) {
        painter.drawText(room.place, Qt::AlignCenter, missing);
        painter.drawText(
            room.place.adjusted(8, room.place.height() / 2 + painter.fontMetrics().height(), -8, 0),
            Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, m_hint);
        return;
    }
    if (m_places.at(size_t(device)).scale(room) < 1)
        paintReduced(painter, device, room);
    else
        paintPicture(painter, device, room);
}

void ImageViewer::paintReduced(QPainter &painter, int device, const PicturePlace::Room &room)
{
    Reduced &reduced = m_reduced.at(size_t(device));
    const QRectF target = m_places.at(size_t(device)).target(room);
    if (reduced.picture.isNull() || reduced.target != target || reduced.place != room.place ||
        reduced.mirror != m_mirror) {
        reduced = {QPixmap(room.place.size() * devicePixelRatio()), target, room.place, m_mirror};
        reduced.picture.setDevicePixelRatio(devicePixelRatio());
        reduced.picture.fill(Qt::white);
        QPainter once(&reduced.picture);
        once.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        once.translate(-room.place.topLeft());
        paintPicture(once, device, room);
    }
    painter.drawPixmap(room.place.topLeft(), reduced.picture);
}

void ImageViewer::paintPicture(QPainter &painter, int device, const PicturePlace::Room &room) const
{
    const QPixmap &image = m_images.at(size_t(device));
    const PicturePlace &place = m_places.at(size_t(device));
    const QRectF target = place.target(room);
    painter.save();
    painter.setClipRect(room.place);
    painter.translate(target.center());
    painter.scale(m_mirror & LeftRight ? -1 : 1, m_mirror & UpDown ? -1 : 1);
    painter.translate(-target.center());
    // Enlarged, each pixel is a square.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, place.scale(room) < 1);
    if (target.size() == image.size())
        painter.drawPixmap(target.topLeft(), image);
    else
        painter.drawPixmap(target, image, QRectF(image.rect()));
    painter.restore();
}

// ---- the pointer

QString ImageViewer::pixelText(const QPoint &position) const
{
    const int device = deviceAt(position);
    const QPixmap &image = m_images.at(size_t(device));
    const auto shown = m_places.at(size_t(device)).pixelAt(position, roomOf(device));
    if (image.isNull() || !shown)
        return {};
    const QPoint pixel(m_mirror & LeftRight ? image.width() - 1 - shown->x() : shown->x(),
                       m_mirror & UpDown ? image.height() - 1 - shown->y() : shown->y());
    const QColor color = image.copy(QRect(pixel, QSize(1, 1))).toImage().pixelColor(0, 0);
    return QStringLiteral("x %1　y %2　R %3　G %4　B %5")
        .arg(pixel.x())
        .arg(pixel.y())
        .arg(color.red())
        .arg(color.green())
        .arg(color.blue());
}

void ImageViewer::showPixel(const QPoint &position)
{
    const QString text = pixelText(position);
    if (text.isEmpty())
        QToolTip::hideText();
    else
        QToolTip::showText(mapToGlobal(position) + QPoint(12, 12), text, this);
}

void ImageViewer::wheelEvent(QWheelEvent *event)
{
    const int device = deviceAt(event->position().toPoint());
    const int steps = event->angleDelta().y() / kWheelStep;
    if (m_images.at(size_t(device)).isNull() || steps == 0) {
        event->ignore();
        return;
    }
    m_places.at(size_t(device)).zoomAt(event->position(), steps, roomOf(device));
    update();
    event->accept();
}

void ImageViewer::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_dragged = event->pos();
}

// A picture that is shown completely stays where it is until it is zoomed.
void ImageViewer::mouseMoveEvent(QMouseEvent *event)
{
    if (!(event->buttons() & Qt::LeftButton)) {
        showPixel(event->pos());
        return;
    }
    const int device = deviceAt(m_dragged);
    const PicturePlace::Room room = roomOf(device);
    PicturePlace &place = m_places.at(size_t(device));
    if (room.picture.isEmpty() || (!place.isZoomed() && QRectF(room.place).contains(place.target(room))))
        return;
    setCursor(Qt::ClosedHandCursor);
    place.moveBy(event->pos() - m_dragged, room);
    m_dragged = event->pos();
    update();
}

void ImageViewer::mouseReleaseEvent(QMouseEvent *)
{
    unsetCursor();
}

void ImageViewer::mouseDoubleClickEvent(QMouseEvent *)
{
    setFitted(m_isFitted);
}
