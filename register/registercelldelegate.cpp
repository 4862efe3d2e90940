#include "registercelldelegate.h"

#include "qtmessagetip.h"
#include "registertablemodel.h"

#include <QLineEdit>
#include <QRegularExpressionValidator>

QWidget *RegisterCellDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                            const QModelIndex &index) const
{
    static const QRegularExpression hex(QStringLiteral("|[0-9A-Fa-f]{2,8}"));
    static const QRegularExpression text(QStringLiteral("[^,\\r\\n]*"));
    const bool isHex =
        index.column() == RegisterTableModel::Address || index.column() == RegisterTableModel::Value;
    auto *editor = new QLineEdit(parent);
    editor->setFrame(false);
    editor->setValidator(new QRegularExpressionValidator(isHex ? hex : text, editor));
    connect(editor, &QLineEdit::inputRejected, editor, [editor, isHex] {
        QtMessageTip::showBelow(editor, isHex ? QStringLiteral("请输入2到8位十六进制数！")
                                              : QStringLiteral("不能含有逗号和换行！"));
    });
    return editor;
}
