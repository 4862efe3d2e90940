#include "hexedit/hexjumppanel.h"

#include "hexedit/hexparse.h"
#include "hexedit/qhexedit.h"
#include "shell/base/qtmessagetip.h"

#include <QLineEdit>
#include <QPushButton>

HexJumpPanel::HexJumpPanel(QHexEdit *edit, QWidget *parent)
    : FormGroup(QStringLiteral("跳转"), parent)
    , m_edit(edit)
    , m_address(new QLineEdit(this))
{
    m_address->setObjectName(QStringLiteral("editJumpAddress"));
    m_address->setPlaceholderText(QStringLiteral("如 0x1F00、+16"));
    m_address->setToolTip(QStringLiteral("十进制，或以0x开头的十六进制；以+或-开头时相对当前地址（Ctrl+G）"));
    auto *jump = new QPushButton(QStringLiteral("跳转"), this);
    jump->setObjectName(QStringLiteral("btnJump"));
    addRow(QStringLiteral("地址"), m_address);
    addWide(jump);
    connect(m_address, &QLineEdit::returnPressed, this, &HexJumpPanel::jump);
    connect(jump, &QPushButton::clicked, this, &HexJumpPanel::jump);
}

void HexJumpPanel::begin()
{
    m_address->setFocus(Qt::ShortcutFocusReason);
    m_address->selectAll();
}

void HexJumpPanel::jump()
{
    const auto address = HexParse::address(m_address->text(), m_edit->address(), m_edit->size());
    if (!address) {
        QtMessageTip::showBelow(m_address, QStringLiteral("地址无效或超出文件范围"));
        return;
    }
    m_edit->goTo(*address);
    m_edit->setFocus();
}
