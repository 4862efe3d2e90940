#include "hexvaluelabel.h"

#include "skin.h"

#include <QKeyEvent>
#include <QPainter>

HexValueLabel::HexValueLabel(QWidget *parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    setFocusPolicy(Qt::TabFocus); // a click leaves the caret where it is
}

void HexValueLabel::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        emit editWanted();
}

void HexValueLabel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        emit editWanted();
    else
        QLabel::keyPressEvent(event);
}

void HexValueLabel::paintEvent(QPaintEvent *event)
{
    QLabel::paintEvent(event);
    if (!hasFocus())
        return;
    QPainter painter(this);
    painter.setPen(QColor(Skin::palette().accent));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}
