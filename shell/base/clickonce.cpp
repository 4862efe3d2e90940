#include "clickonce.h"

#include <QAbstractButton>
#include <QEvent>

namespace {

class Filter : public QObject
{
public:
    using QObject::QObject;

protected:
    // The second press comes as this event; a release without a press does nothing.
    bool eventFilter(QObject *, QEvent *event) override
    {
        return event->type() == QEvent::MouseButtonDblClick;
    }
};

} // namespace

void ClickOnce::install(QAbstractButton *button)
{
    button->installEventFilter(new Filter(button));
}
