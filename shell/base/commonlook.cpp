#include "shell/base/commonlook.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QStyledItemDelegate>

namespace CommonLook {

void complete(QWidget *root)
{
    const auto buttons = root->findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons)
        if (button->text().isEmpty() && button->accessibleName().isEmpty())
            button->setAccessibleName(button->toolTip());
    const auto boxes = root->findChildren<QComboBox *>();
    for (QComboBox *box : boxes)
        if (!qobject_cast<QStyledItemDelegate *>(box->itemDelegate()))
            box->setItemDelegate(new QStyledItemDelegate(box));
}

} // namespace CommonLook
