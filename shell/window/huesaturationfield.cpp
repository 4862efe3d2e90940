#include "huesaturationfield.h"

#include "skin.h"

#include <QKeyEvent>
#include <QPainter>

namespace {

// Always at full value: a dark field shows nothing to choose from.
QImage drawField(const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        const int saturation = 255 - y * 255 / qMax(1, size.height() - 1);
        for (int x = 0; x < size.width(); ++x)
            line[x] = QColor::fromHsv(x * 359 / qMax(1, size.width() - 1), saturation, 255).rgb();
    }
    return image;
}

} // namespace

HueSaturationField::HueSaturationField(QWidget *parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::CrossCursor);
    setMinimumSize(180, 120);
    setAccessibleName(QStringLiteral("色相和饱和度"));
}

void HueSaturationField::setColor(int hue, int saturation)
{
    m_hue = qBound(0, hue, 359);
    m_saturation = qBound(0, saturation, 255);
    update();
}

QSize HueSaturationField::sizeHint() const
{
    return {280, 140};
}

void HueSaturationField::paintEvent(QPaintEvent *)
{
    const QRect area = rect().adjusted(1, 1, -1, -1);
    if (m_field.size() != area.size())
        m_field = drawField(area.size());
    QPainter painter(this);
    painter.drawImage(area.topLeft(), m_field);
    const SkinPalette &palette = Skin::palette();
    painter.setPen(QColor(hasFocus() ? palette.accent : palette.border));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));

    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF mark(area.left() + m_hue * (area.width() - 1) / 359.0,
                       area.top() + (255 - m_saturation) * (area.height() - 1) / 255.0);
    painter.setPen(QPen(Qt::black, 3));
    painter.drawEllipse(mark, 5, 5);
    painter.setPen(QPen(Qt::white, 1.5));
    painter.drawEllipse(mark, 5, 5);
}

void HueSaturationField::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        chooseAt(event->pos());
}

void HueSaturationField::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() & Qt::LeftButton)
        chooseAt(event->pos());
}

void HueSaturationField::keyPressEvent(QKeyEvent *event)
{
    const int step = event->modifiers() & Qt::ShiftModifier ? 10 : 1;
    switch (event->key()) {
    case Qt::Key_Left:
        choose(m_hue - step, m_saturation);
        break;
    case Qt::Key_Right:
        choose(m_hue + step, m_saturation);
        break;
    case Qt::Key_Up:
        choose(m_hue, m_saturation + step);
        break;
    case Qt::Key_Down:
        choose(m_hue, m_saturation - step);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

void HueSaturationField::choose(int hue, int saturation)
{
    m_hue = qBound(0, hue, 359);
    m_saturation = qBound(0, saturation, 255);
    update();
    emit changed(m_hue, m_saturation);
}

void HueSaturationField::chooseAt(const QPoint &point)
{
    const int width = qMax(1, this->width() - 3);
    const int height = qMax(1, this->height() - 3);
    choose((point.x() - 1) * 359 / width, 255 - (point.y() - 1) * 255 / height);
}
