#include "colorswatches.h"

#include "skin.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QToolTip>

namespace {
constexpr int side = 22;
constexpr int gap = 4;
} // namespace

ColorSwatches::ColorSwatches(int columns, int rows, QWidget *parent)
    : QWidget(parent)
    , m_columns(columns)
    , m_rows(rows)
{
    setFocusPolicy(Qt::StrongFocus);
    setFixedSize(sizeHint());
}

void ColorSwatches::setColors(const QVector<QColor> &colors)
{
    m_colors = colors.mid(0, m_columns * m_rows);
    moveCursor(0);
}

void ColorSwatches::setCurrentColor(const QColor &color)
{
    m_current = color;
    if (const int index = m_colors.indexOf(color); index >= 0)
        moveCursor(index);
    update();
}

QRect ColorSwatches::cell(int index) const
{
    return {(index % m_columns) * (side + gap), (index / m_columns) * (side + gap), side, side};
}

QSize ColorSwatches::sizeHint() const
{
    return {m_columns * (side + gap) - gap, m_rows * (side + gap) - gap};
}

void ColorSwatches::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const SkinPalette &palette = Skin::palette();
    QColor outline(palette.text); // seen on the window and around any color
    outline.setAlpha(80);
    for (int i = 0; i < m_columns * m_rows; ++i) {
        const QRectF box = QRectF(cell(i)).adjusted(0.5, 0.5, -0.5, -0.5);
        const bool filled = i < m_colors.size();
        const bool current = filled && m_colors.at(i) == m_current;
        const bool focused = filled && hasFocus() && i == m_cursor;
        painter.setBrush(filled ? QBrush(m_colors.at(i)) : QBrush(Qt::NoBrush));
        painter.setPen(QPen(outline, 1));
        painter.drawRoundedRect(box, 3, 3);
        if (!current && !focused)
            continue;
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(palette.accent), focused ? 4 : 2));
        const qreal inset = focused ? 1.5 : 0.5;
        painter.drawRoundedRect(box.adjusted(inset, inset, -inset, -inset), 3, 3);
    }
}

void ColorSwatches::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        pick(indexAt(event->pos()));
}

void ColorSwatches::keyPressEvent(QKeyEvent *event)
{
    int step = 0;
    switch (event->key()) {
    case Qt::Key_Left:
        step = -1;
        break;
    case Qt::Key_Right:
        step = 1;
        break;
    case Qt::Key_Up:
        step = -m_columns;
        break;
    case Qt::Key_Down:
        step = m_columns;
        break;
    case Qt::Key_Space:
        pick(m_cursor);
        return;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    if (m_cursor + step >= 0 && m_cursor + step < m_colors.size())
        moveCursor(m_cursor + step);
}

// A screen reader reads the color at the cursor.
void ColorSwatches::moveCursor(int index)
{
    m_cursor = index;
    setAccessibleName(m_colors.isEmpty() ? QStringLiteral("颜色")
                                         : QStringLiteral("颜色 %1").arg(m_colors.at(index).name()));
    update();
}

bool ColorSwatches::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        auto *help = static_cast<QHelpEvent *>(event);
        const int index = indexAt(help->pos());
        QToolTip::showText(help->globalPos(), index < 0 ? QString() : m_colors.at(index).name(), this);
        return true;
    }
    return QWidget::event(event);
}

int ColorSwatches::indexAt(const QPoint &point) const
{
    for (int i = 0; i < m_colors.size(); ++i)
        if (cell(i).contains(point))
            return i;
    return -1;
}

void ColorSwatches::pick(int index)
{
    if (index < 0 || index >= m_colors.size())
        return;
    setCurrentColor(m_colors.at(index));
    emit picked(m_current);
}
