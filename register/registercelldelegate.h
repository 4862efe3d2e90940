#pragma once

// Edits the cells that a RegisterViewModel shows: hexadecimal addresses, values in the
// base shown, anything but commas and line breaks elsewhere. Tells the user why it
// refuses a text.

#include <QStyledItemDelegate>

class RegisterCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;
};
