#include "shell/base/stateindicator.h"

#include <QPainter>

StateIndicator::StateIndicator(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("stateIndicator"));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setOn(false);
}

void StateIndicator::setOn(bool on)
{
    m_on = on;
    setToolTip(on ? QStringLiteral("已打开") : QStringLiteral("已关闭"));
    update();
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
    const QColor colour = m_on ? QColor(0x34, 0xc3, 0x88) : QColor(0x8a, 0x8a, 0x8a);
    painter.setPen(QPen(colour, 2));
    painter.setBrush(m_on ? QBrush(colour) : QBrush(Qt::NoBrush));
    painter.drawEllipse(disc);
}
