#include "commanddelegate.h"

#include "command.h"
#include "commandmodel.h"

#include <QComboBox>
#include <QLineEdit>

QWidget *CommandDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                       const QModelIndex &index) const
{
    const QStringList choices = CommandModel::choices(index.column());
    if (choices.isEmpty()) {
        auto *edit = new QLineEdit(parent);
        edit->setMaxLength(Command::maxText);
        edit->setFrame(false);
        return edit;
    }
    auto *box = new QComboBox(parent);
    box->addItems(choices);
    // A choice is a change at once, as of any list.
    connect(box, QOverload<int>::of(&QComboBox::activated), this, [this, box] {
        auto *self = const_cast<CommandDelegate *>(this);
        emit self->commitData(box);
        emit self->closeEditor(box);
    });
    return box;
}

void CommandDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (auto *box = qobject_cast<QComboBox *>(editor))
        box->setCurrentIndex(index.data(Qt::EditRole).toInt());
    else if (auto *edit = qobject_cast<QLineEdit *>(editor))
        edit->setText(index.data(Qt::EditRole).toString());
}

void CommandDelegate::setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const
{
    if (const auto *box = qobject_cast<QComboBox *>(editor))
        model->setData(index, box->currentIndex());
    else if (const auto *edit = qobject_cast<QLineEdit *>(editor))
        model->setData(index, edit->text());
}
