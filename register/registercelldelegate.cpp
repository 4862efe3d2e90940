#include "registercelldelegate.h"

#include "qtmessagetip.h"
#include "registertablemodel.h"
#include "registerviewmodel.h"

#include <QLineEdit>
#include <QRegularExpressionValidator>

#include <limits>

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

// A single digit is completed as a pasted one, so that no editor drops it when it
// loses the focus.
class CellValidator : public QRegularExpressionValidator
{
public:
    CellValidator(int column, RegisterCell::Base base, QObject *parent)
        : QRegularExpressionValidator(charactersOf(column, base), parent)
        , m_column(column)
        , m_base(base)
    {
    }
    void fixup(QString &text) const override
    {
        text = RegisterCell::stored(m_column, text, m_base).value_or(text);
    }

private:
    int m_column;
    RegisterCell::Base m_base;
};

} // namespace

QWidget *RegisterCellDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                            const QModelIndex &index) const
{
    auto *editor = new QLineEdit(parent);
    editor->setFrame(false);
    editor->setMaxLength(std::numeric_limits<int>::max()); // opened, it cuts nothing
    editor->setValidator(new CellValidator(index.column(), baseOf(index), editor));
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
