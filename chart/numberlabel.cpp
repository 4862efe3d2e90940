#include "numberlabel.h"

NumberLabel::NumberLabel(QWidget *parent)
    : QLabel(parent)
{
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    setNumber(QString());
}

void NumberLabel::setNumber(const QString &number)
{
    m_number = number;
    const bool fits = fontMetrics().horizontalAdvance(number) <= contentsRect().width();
    setText(fits ? number : QStringLiteral("…"));
    setToolTip(QStringLiteral("当前值：") + (number.isEmpty() ? QStringLiteral("无") : number));
}

void NumberLabel::resizeEvent(QResizeEvent *event)
{
    QLabel::resizeEvent(event);
    setNumber(m_number);
}
