#include "hexcommand.h"

#include "qtmessagetip.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QPointer>
#include <QShortcut>
#include <memory>

HexCommand::HexCommand(const QString &text, const QList<QKeySequence> &keys, QObject *parent)
    : QAction(text, parent)
{
    setShortcuts(keys);
    setShortcutVisibleInContextMenu(false);
}

void HexCommand::setRefusal(const QString &reason)
{
    m_refusal = reason;
    setToolTip(reason); // in a menu
    setEnabled(reason.isEmpty());
}

void HexCommand::bind(QAbstractButton *button)
{
    connect(button, &QAbstractButton::clicked, this, &HexCommand::run);
    enableWith(button);
}

// A widget that is disabled loses the focus; it gets it back, unless the user
// has moved it meanwhile.
void HexCommand::enableWith(QWidget *widget)
{
    const auto refuge = std::make_shared<QPointer<QWidget>>();
    const auto show = [this, widget, refuge] {
        if (widget->isEnabledTo(widget->parentWidget()) == isEnabled())
            return;
        const bool hadFocus = widget->window()->focusWidget() == widget;
        widget->setEnabled(isEnabled());
        if (hadFocus)
            *refuge = widget->window()->focusWidget();
        else if (isEnabled() && *refuge && widget->window()->focusWidget() == *refuge)
            widget->setFocus();
        if (isEnabled())
            refuge->clear();
    };
    connect(this, &QAction::changed, widget, show);
    show();
}

bool HexCommand::hasKey(const QKeyEvent *event) const
{
    const int key = event->key() | static_cast<int>(event->modifiers() & ~Qt::KeypadModifier);
    return shortcuts().contains(QKeySequence(key));
}

void HexCommand::listenIn(QWidget *widget)
{
    const auto keys = shortcuts();
    for (const QKeySequence &key : keys)
        connect(new QShortcut(key, widget), &QShortcut::activated, this, &HexCommand::run);
}

void HexCommand::run()
{
    if (isEnabled())
        trigger();
    else
        QtMessageTip::showTip(m_refusal);
}
