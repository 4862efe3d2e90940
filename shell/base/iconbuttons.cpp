#include "iconbuttons.h"

#include <QAbstractButton>

namespace IconButtons {

void nameByToolTips(QWidget *root)
{
    const auto buttons = root->findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons)
        if (button->text().isEmpty() && button->accessibleName().isEmpty())
            button->setAccessibleName(button->toolTip());
}

} // namespace IconButtons
