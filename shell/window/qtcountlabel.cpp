#include "qtcountlabel.h"

QtCountLabel::QtCountLabel(const QString &caption, QWidget *parent)
    : QLabel(parent)
    , m_caption(caption)
{
    setTextFormat(Qt::PlainText);
}

// Wider figures make the label wider; it does not shrink again while a page
// counts, so that the bar keeps still.
void QtCountLabel::setCount(const QString &count)
{
    // Pages may count something else, with a text of their own.
    const bool isNumber = !count.isEmpty() && count.at(0).isDigit();
    setText(isNumber ? m_caption + QStringLiteral(": ") + count : count);
    const int width = sizeHint().width();
    if (width > minimumWidth())
        setMinimumWidth(width);
}

void QtCountLabel::clearCount()
{
    clear();
    setMinimumWidth(0);
}
