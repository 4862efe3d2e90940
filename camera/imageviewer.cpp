#include "imageviewer.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>

#include <cmath>

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
    setFocusPolicy(Qt::ClickFocus); // for Esc
}

void ImageViewer::setImage(int device, const QPixmap &image, const RawText &rawText)
{
    if (image.isNull())
        return;
    QPixmap &shown = m_images.at(device == 1 ? 1 : 0);
    const bool isOther = shown.size() != image.size();
    shown = image;
    m_reduced.at(device == 1 ? 1 : 0) = Reduced();
    m_rawTexts.at(device == 1 ? 1 : 0) = rawText;
    if (isOther) // what was zoomed is no part of it
        restore(device == 1 ? 1 : 0);
    if (!m_region.isNull() && region().isNull()) // outside of a smaller picture
        clearRegion();
    update();
    emit pictureChanged(device == 1 ? 1 : 0);
    if (underMouse() && QToolTip::isVisible())
        showPixel(mapFromGlobal(QCursor::pos()));
}

void ImageViewer::setDisplayCount(int count)
{
    m_displayCount = count == 2 ? 2 : 1;
    if (m_displayCount == 1 && m_regionDevice == 1)
        clearRegion();
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
    } else {
        paintImage(painter, 0, QStringLiteral("图像1显示区域"));
        paintImage(painter, 1, QStringLiteral("图像2显示区域"));
    }
    paintRegion(painter);
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

// ---- the region

QRect ImageViewer::region() const
{
    return m_region & image(m_regionDevice).rect();
}

void ImageViewer::clearRegion()
{
    m_isMarking = false;
    m_region = {};
    m_regionDevice = 0;
    update();
    emit regionChanged();
}

// Black and white, so that it stands out from any picture.
void ImageViewer::paintRegion(QPainter &painter) const
{
    const QRect pixels = region();
    if (pixels.isNull())
        return;
    const PicturePlace::Room room = roomOf(m_regionDevice);
    const PicturePlace &place = m_places.at(size_t(m_regionDevice));
    const QRect shown =
        QRect(mirrored(m_regionDevice, pixels.topLeft()), mirrored(m_regionDevice, pixels.bottomRight()));
    const QRect ordered(QPoint(qMin(shown.left(), shown.right()), qMin(shown.top(), shown.bottom())),
                        pixels.size());
    const double factor = place.scale(room);
    const QRectF frame(place.target(room).topLeft() + QPointF(ordered.topLeft()) * factor,
                       QSizeF(ordered.size()) * factor);
    painter.save();
    painter.setClipRect(room.place);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(Qt::white);
    painter.drawRect(frame.toRect().adjusted(0, 0, -1, -1));
    painter.setPen(QPen(Qt::black, 1, Qt::DashLine));
    painter.drawRect(frame.toRect().adjusted(0, 0, -1, -1));
    painter.restore();
}

// From the picture to what is shown, or back.
QPoint ImageViewer::mirrored(int device, const QPoint &pixel) const
{
    const QPixmap &image = m_images.at(size_t(device));
    return {m_mirror & LeftRight ? image.width() - 1 - pixel.x() : pixel.x(),
            m_mirror & UpDown ? image.height() - 1 - pixel.y() : pixel.y()};
}

QPoint ImageViewer::pixelNear(int device, const QPointF &position) const
{
    const PicturePlace::Room room = roomOf(device);
    const PicturePlace &place = m_places.at(size_t(device));
    const QPointF pixel = (position - place.target(room).topLeft()) / place.scale(room);
    const QPoint shown(static_cast<int>(std::floor(qBound(0.0, pixel.x(), room.picture.width() - 1.0))),
                       static_cast<int>(std::floor(qBound(0.0, pixel.y(), room.picture.height() - 1.0))));
    return mirrored(device, shown);
}

void ImageViewer::markTo(const QPoint &position)
{
    const QPoint corner = pixelNear(m_regionDevice, position);
    m_region = QRect(QPoint(qMin(corner.x(), m_corner.x()), qMin(corner.y(), m_corner.y())),
                     QPoint(qMax(corner.x(), m_corner.x()), qMax(corner.y(), m_corner.y())));
    update();
    emit regionChanged();
}

void ImageViewer::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && !m_region.isNull())
        clearRegion();
    else
        QWidget::keyPressEvent(event);
}

// ---- the pointer

QString ImageViewer::pixelText(const QPoint &position) const
{
    const int device = deviceAt(position);
    const QPixmap &image = m_images.at(size_t(device));
    const auto shown = m_places.at(size_t(device)).pixelAt(position, roomOf(device));
    if (image.isNull() || !shown)
        return {};
    const QPoint pixel = mirrored(device, *shown);
    const QColor color = image.copy(QRect(pixel, QSize(1, 1))).toImage().pixelColor(0, 0);
    const RawText &rawText = m_rawTexts.at(size_t(device));
    const QString raw = rawText ? rawText(pixel) : QString();
    return QStringLiteral("x %1　y %2　R %3　G %4　B %5%6")
        .arg(pixel.x())
        .arg(pixel.y())
        .arg(color.red())
        .arg(color.green())
        .arg(color.blue())
        .arg(raw.isEmpty() ? QString() : QStringLiteral("　原始 ") + raw);
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
    if (event->button() != Qt::LeftButton)
        return;
    m_dragged = event->pos();
    const int device = deviceAt(event->pos());
    m_isMarking = event->modifiers() & Qt::ShiftModifier && !image(device).isNull();
    if (!m_isMarking)
        return;
    clearRegion();
    m_isMarking = true;
    m_regionDevice = device;
    m_corner = pixelNear(device, event->pos());
    QToolTip::hideText();
    setCursor(Qt::CrossCursor);
}

// A picture that is shown completely stays where it is until it is zoomed.
void ImageViewer::mouseMoveEvent(QMouseEvent *event)
{
    if (!(event->buttons() & Qt::LeftButton)) {
        showPixel(event->pos());
        return;
    }
    if (m_isMarking) {
        markTo(event->pos());
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
    m_isMarking = false;
}

void ImageViewer::mouseDoubleClickEvent(QMouseEvent *)
{
    if (m_region.isNull())
        setFitted(m_isFitted);
    else
        clearRegion();
}
