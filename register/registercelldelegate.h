#pragma once

// Edits the register table's cells: hexadecimal in address and value, anything
// but commas and line breaks elsewhere. What is refused is said.

#include <QStyledItemDelegate>

class RegisterCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    enum Column { Number, Address, Value, Description };

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
};
