#include "hexfirstaddress.h"

#include "hexparse.h"
#include "namedialog.h"
#include "qhexedit.h"
#include "qtmessagetip.h"

namespace {
constexpr qint64 kMaxAddress = (qint64(1) << 48) - 1;
}

HexFirstAddress::HexFirstAddress(QHexEdit *edit)
    : HexCommand(QStringLiteral("起始地址…"), {}, edit)
    , m_edit(edit)
{
    connect(this, &QAction::triggered, this, &HexFirstAddress::ask);
    connect(edit, &QHexEdit::stateChanged, this, &HexFirstAddress::update);
    update();
}

void HexFirstAddress::update()
{
    setRefusal(m_edit->addresses().isFixed() ? QStringLiteral("文件中的数据有各自的地址")
                                             : m_edit->editRefusal());
}

void HexFirstAddress::ask()
{
    const QString present = QString::number(m_edit->addresses().firstAddress(), 16).toUpper();
    const QString typed = NameDialog::ask(m_edit->window(), QStringLiteral("起始地址"),
                                          QStringLiteral("文件第一个字节的地址（十六进制）"), present, 18);
    if (typed.isEmpty() || !isEnabled()) // another file may have been opened meanwhile
        return;
    const auto address = HexParse::address(typed, 16, 0, kMaxAddress);
    if (!address)
        QtMessageTip::showTip(QStringLiteral("地址无效，应为0到%1之间的十六进制数")
                                  .arg(QString::number(kMaxAddress, 16).toUpper()),
                              3000);
    else
        m_edit->setAddresses(HexAddressMap(*address));
}
