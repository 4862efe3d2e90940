#include "fieldbehavior.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QScrollBar>
#include <QStyledItemDelegate>

namespace {

bool isSlider(const QObject *object)
{
    return qobject_cast<const QAbstractSlider *>(object) && !qobject_cast<const QScrollBar *>(object);
}

bool isField(const QObject *object)
{
    return qobject_cast<const QComboBox *>(object) || qobject_cast<const QAbstractSpinBox *>(object) ||
           isSlider(object);
}

// Qt's own delegate of a combo box takes no size from the style sheet.
void prepareList(QComboBox *box)
{
    if (!qobject_cast<QStyledItemDelegate *>(box->itemDelegate()))
        box->setItemDelegate(new QStyledItemDelegate(box));
}

// The wheel would give the focus before the event arrives.
void prepare(QWidget *field)
{
    if (field->focusPolicy() == Qt::WheelFocus)
        field->setFocusPolicy(Qt::StrongFocus);
    if (auto *box = qobject_cast<QComboBox *>(field))
        prepareList(box);
}

void showHandleOnDemand(QScrollBar *bar)
{
    const auto update = [bar] { bar->setEnabled(bar->minimum() < bar->maximum()); };
    QObject::connect(bar, &QScrollBar::rangeChanged, bar, update);
    update();
}

bool takesWheel(const QWidget *field)
{
    return !qobject_cast<const QComboBox *>(field) && field->hasFocus();
}

} // namespace

FieldBehavior::FieldBehavior(QObject *parent)
    : QObject(parent)
{
}

void FieldBehavior::install()
{
    if (!qApp->findChild<FieldBehavior *>(QString(), Qt::FindDirectChildrenOnly))
        qApp->installEventFilter(new FieldBehavior(qApp));
}

void FieldBehavior::nameIconButtons(QWidget *parent)
{
    const auto buttons = parent->findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons)
        if (button->text().isEmpty() && button->accessibleName().isEmpty())
            button->setAccessibleName(button->toolTip());
}

bool FieldBehavior::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::Polish && event->type() != QEvent::Wheel)
        return false;
    if (auto *bar = qobject_cast<QScrollBar *>(watched); bar && event->type() == QEvent::Polish)
        showHandleOnDemand(bar);
    if (!isField(watched))
        return false;
    auto *field = static_cast<QWidget *>(watched);
    if (event->type() == QEvent::Polish) {
        prepare(field);
        return false;
    }
    if (takesWheel(field))
        return false;
    event->ignore(); // goes on to the parent
    return true;
}
