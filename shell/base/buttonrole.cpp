#include "buttonrole.h"

#include <QStyle>
#include <QVariant>
#include <QWidget>

namespace ButtonRole {

void setPrimary(QWidget *button, bool primary)
{
    if (button->property("primary").toBool() == primary)
        return;
    button->setProperty("primary", primary);
    button->style()->unpolish(button);
    button->style()->polish(button);
}

} // namespace ButtonRole
