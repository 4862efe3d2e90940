#include "placeholdertext.h"

#include <QEvent>
#include <QWidget>

namespace {

constexpr int kAlpha = 178; // 70 %

void fade(QWidget *widget)
{
    QPalette colors = widget->palette();
    QColor faint = colors.color(QPalette::Text);
    faint.setAlpha(kAlpha);
    if (colors.color(QPalette::PlaceholderText) == faint)
        return;
    colors.setColor(QPalette::PlaceholderText, faint);
    widget->setPalette(colors);
}

class Fader : public QObject
{
public:
    using QObject::QObject;
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
            fade(static_cast<QWidget *>(watched));
        return false;
    }
};

} // namespace

namespace PlaceholderText {

void keepFaint(QWidget *widget)
{
    widget->installEventFilter(new Fader(widget));
    fade(widget);
}

} // namespace PlaceholderText
