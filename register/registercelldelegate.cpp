#include "registercelldelegate.h"

#include "qtmessagetip.h"
#include "registertablemodel.h"
#include "registerviewmodel.h"

#include <QLineEdit>
#include <QRegularExpressionValidator>

namespace {

RegisterCell::Base baseOf(const QModelIndex &index)
{
    return static_cast<const RegisterViewModel *>(index.model())->base();
}

// What may be typed; RegisterCell has the last word.
QRegularExpression charactersOf(int column, RegisterCell::Base base)
{
    static const QRegularExpression hex(QStringLiteral("|[0-9A-Fa-f]{2,8}"));
    static const QRegularExpression decimal(QStringLiteral("|[0-9]{1,10}"));
    static const QRegularExpression binary(QStringLiteral("|[01 ]{1,39}"));
    static const QRegularExpression text(QStringLiteral("[^,\\r\\n]*"));
    if (column == RegisterTableModel::Value)
        return base == RegisterCell::Decimal ? decimal : base == RegisterCell::Binary ? binary : hex;
    return column == RegisterTableModel::Address ? hex : text;
}

} // namespace

QWidget *RegisterCellDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                            const QModelIndex &index) const
{
    auto *editor = new QLineEdit(parent);
    editor->setFrame(false);
    editor->setValidator(
        new QRegularExpressionValidator(charactersOf(index.column(), baseOf(index)), editor));
    const QString rule = RegisterCell::rule(index.column(), baseOf(index));
    connect(editor, &QLineEdit::inputRejected, editor,
            [editor, rule] { QtMessageTip::showBelow(editor, rule); });
    return editor;
}

void RegisterCellDelegate::setModelData(QWidget *editor, QAbstractItemModel *model,
                                        const QModelIndex &index) const
{
    if (!model->setData(index, static_cast<QLineEdit *>(editor)->text()))
        QtMessageTip::showTip(RegisterCell::rule(index.column(), baseOf(index)));
}
