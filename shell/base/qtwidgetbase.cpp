#include "qtwidgetbase.h"

#include "fieldbehavior.h"
#include "qtmessagetip.h"

#include <QPushButton>
#include <QShortcut>

namespace {

// Not the button's own shortcut, which setText() would drop.
void addKey(QPushButton *button, const QKeySequence &key, QWidget *page)
{
    QObject::connect(new QShortcut(key, page), &QShortcut::activated, button, [button] {
        if (button->isEnabled())
            button->click();
        else if (!button->toolTip().isEmpty())
            QtMessageTip::showTip(button->toolTip());
    });
}

} // namespace

QtWidgetBase::QtWidgetBase(QWidget *parent)
    : QWidget(parent)
{
    FieldBehavior::install();
}

QStringList QtWidgetBase::counts() const
{
    return {};
}

void QtWidgetBase::clearCounts()
{
}

bool QtWidgetBase::mayClose()
{
    return true;
}

void QtWidgetBase::closeLinks()
{
}

bool QtWidgetBase::isClosed() const
{
    return true;
}

bool QtWidgetBase::saveBeforeExit()
{
    return true;
}

void QtWidgetBase::reloadSettings()
{
}

void QtWidgetBase::reloadCodec()
{
}

void QtWidgetBase::notify(const Notice &notice)
{
    emit signalNotify(notice.text, notice.kind);
}

void QtWidgetBase::setPageKeys(QPushButton *open, QPushButton *fold)
{
    if (open) {
        addKey(open, QKeySequence(Qt::Key_F5), this);
        open->setToolTip(QStringLiteral("快捷键：F5"));
    }
    addKey(fold, QKeySequence(int(Qt::CTRL) + Qt::Key_B), this);
    fold->setToolTip(QStringLiteral("隐藏或显示配置界面（Ctrl+B）"));
}
