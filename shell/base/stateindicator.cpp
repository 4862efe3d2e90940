#include "stateindicator.h"

#include <QPainter>

StateIndicator::StateIndicator(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("stateIndicator"));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setOn(false);
}

void StateIndicator::setState(State state, const QString &toolTip)
{
    m_state = state;
    setToolTip(toolTip);
    update();
}

void StateIndicator::setOn(bool on)
{
    setState(on ? On : Off, on ? QStringLiteral("已打开") : QStringLiteral("已关闭"));
}

QSize StateIndicator::sizeHint() const
{
    return {16, 16};
}

void StateIndicator::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event)
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF disc = QRectF(rect()).adjusted(3, 3, -3, -3);
    static const QColor colors[] = {
        {0x8a, 0x8a, 0x8a}, {0x34, 0xc3, 0x88}, {0xf8, 0x9a, 0x34}, {0xf0, 0x3e, 0x10}};
    const QColor color = colors[m_state];
    painter.setPen(QPen(color, 2));
    if (m_state == Failed) {
        painter.drawLine(disc.topLeft(), disc.bottomRight());
        painter.drawLine(disc.bottomLeft(), disc.topRight());
        return;
    }
    painter.setBrush(m_state == On ? QBrush(color) : QBrush(Qt::NoBrush));
    painter.drawEllipse(disc);
}
