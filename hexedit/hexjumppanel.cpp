#include "hexjumppanel.h"

#include "hexcommand.h"
#include "hexparse.h"
#include "qhexedit.h"
#include "qtmessagetip.h"
#include "settings.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>

namespace {

constexpr int kMaxRemembered = 10;

QString hexadecimal(qint64 address)
{
    return QStringLiteral("0x") + QString::number(address, 16).toUpper();
}

} // namespace

HexJumpPanel::HexJumpPanel(QHexEdit *edit, QWidget *parent)
    : FormGroup(QStringLiteral("跳转"), parent)
    , m_edit(edit)
    , m_address(new QLineEdit(this))
    , m_base(new QComboBox(this))
    , m_goTo(new HexCommand(QStringLiteral("跳转"), {int(Qt::CTRL) + Qt::Key_G}, this))
{
    m_address->setObjectName(QStringLiteral("editJumpAddress"));
    m_address->setPlaceholderText(QStringLiteral("如 1F00、+10"));
    m_address->setToolTip(
        QStringLiteral("按所选的进制输入，以0x开头时为十六进制；以+或-开头时相对当前地址，\n"
                       "end-20从文件末尾往前；上下方向键选择最近的地址（Ctrl+G）"));
    m_base->setObjectName(QStringLiteral("comboJumpBase"));
    m_base->setAccessibleName(QStringLiteral("地址的进制"));
    m_base->addItem(QStringLiteral("十六进制"), 16); // as the address column
    m_base->addItem(QStringLiteral("十进制"), 10);
    auto *jump = new QPushButton(QStringLiteral("跳转"), this);
    jump->setObjectName(QStringLiteral("btnJump"));
    addRow(QStringLiteral("地址"), m_address);
    addPair(m_base, jump);
    connect(m_address, &QLineEdit::textEdited, this, [this] { m_recalled = -1; });
    connect(m_goTo, &QAction::triggered, this, &HexJumpPanel::begin);
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
    const qint64 first = m_edit->addresses().firstAddress();
    const qint64 end = m_edit->shownAddress(m_edit->size());
    const auto address = HexParse::address(m_address->text(), m_base->currentData().toInt(),
                                           m_edit->shownAddress(m_edit->address()), end);
    if (!address || *address < first) {
        QtMessageTip::showBelow(
            m_address, QStringLiteral("地址无效或超出文件范围（%1到%2）")
                           .arg(first > 0 ? hexadecimal(first) : QStringLiteral("0"), hexadecimal(end)));
        return;
    }
    const auto offset = m_edit->addresses().offsetOf(*address, m_edit->size());
    if (!offset) {
        QtMessageTip::showBelow(
            m_address, QStringLiteral("%1在两段数据之间，文件中没有此地址的数据").arg(hexadecimal(*address)),
            3000);
        return;
    }
    remember(hexadecimal(*address));
    m_edit->goTo(*offset);
    m_edit->setFocus();
}

void HexJumpPanel::remember(const QString &address)
{
    Setting<QStringList> &kept = Settings::instance().hexEditPage.jumpHistory;
    QStringList addresses = kept;
    addresses.removeAll(address);
    addresses.prepend(address);
    kept.change(addresses.mid(0, kMaxRemembered));
    m_recalled = -1;
}

void HexJumpPanel::recall(int steps)
{
    const QStringList addresses = Settings::instance().hexEditPage.jumpHistory;
    if (m_recalled < 0)
        m_typed = m_address->text();
    const int last = qMin(addresses.size(), kMaxRemembered) - 1; // the file may hold more
    m_recalled = qBound(-1, m_recalled + steps, last);
    m_address->setText(m_recalled < 0 ? m_typed : addresses.at(m_recalled));
}

void HexJumpPanel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        m_edit->setFocus();
    else if (m_address->hasFocus() && event->key() == Qt::Key_Up)
        recall(1);
    else if (m_address->hasFocus() && event->key() == Qt::Key_Down)
        recall(-1);
    else
        FormGroup::keyPressEvent(event);
}
