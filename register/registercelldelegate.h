#pragma once

// Edits the register table's cells: hexadecimal in address and value, anything
// but commas and line breaks elsewhere. Tells the user why it refuses a character.

#include <QStyledItemDelegate>

class RegisterCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
};
