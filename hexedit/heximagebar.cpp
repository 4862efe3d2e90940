#include "heximagebar.h"

#include "heximage.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <QVariant>

namespace {

constexpr int kMaxRows = 4; // of faults, visible at once

QString hexadecimal(qint64 address)
{
    return QStringLiteral("0x") + QString::number(address, 16).toUpper().rightJustified(8, QLatin1Char('0'));
}

QString rangeText(const HexAddressMap &addresses, qint64 size)
{
    if (size == 0)
        return QStringLiteral("没有数据");
    return QStringLiteral("%1段，%2字节，%3到%4")
        .arg(addresses.runCount())
        .arg(size)
        .arg(hexadecimal(addresses.firstAddress()), hexadecimal(addresses.addressOf(size - 1)));
}

} // namespace

HexImageBar::HexImageBar(QWidget *parent)
    : QWidget(parent)
    , m_text(new QLabel(this))
    , m_faultCount(new QLabel(this))
    , m_showFaults(new QPushButton(QStringLiteral("查看问题"), this))
    , m_other(new QPushButton(this))
    , m_faults(new QListWidget(this))
{
    setObjectName(QStringLiteral("hexImageBar"));
    m_text->setObjectName(QStringLiteral("labelImage"));
    m_text->setTextFormat(Qt::PlainText);
    m_text->setMinimumWidth(1); // a long text must not widen the window
    m_faultCount->setObjectName(QStringLiteral("labelFaults"));
    m_faultCount->setProperty("kind", "error");
    m_showFaults->setObjectName(QStringLiteral("btnFaults"));
    m_showFaults->setCheckable(true);
    m_showFaults->setFocusPolicy(Qt::TabFocus);
    m_other->setObjectName(QStringLiteral("btnOtherView"));
    m_other->setFocusPolicy(Qt::TabFocus);
    m_faults->setObjectName(QStringLiteral("listFaults"));
    m_faults->setAccessibleName(QStringLiteral("文件中的问题"));
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_text, 1);
    for (QWidget *widget : std::initializer_list<QWidget *>{m_faultCount, m_showFaults, m_other})
        row->addWidget(widget);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addLayout(row);
    column->addWidget(m_faults);
    connect(m_showFaults, &QPushButton::toggled, m_faults, &QWidget::setVisible);
    connect(m_other, &QPushButton::clicked, this,
            [this] { m_isImage ? emit bytesWanted() : emit addressesWanted(); });
    hide();
}

void HexImageBar::showFile(const HexImage &image, HexForm contentForm, const HexAddressMap &addresses,
                           qint64 size)
{
    m_isImage = addresses.isFixed();
    const bool isText = image.form != HexForm::Bytes;
    if (isText)
        m_text->setText(HexForms::name(image.form) + QStringLiteral("：") + rangeText(addresses, size));
    else if (m_isImage)
        m_text->setText(QStringLiteral("已保存为原始数据，此处仍按地址显示：") + rangeText(addresses, size));
    else
        m_text->setText(QStringLiteral("按原始字节显示，文件内容为%1").arg(HexForms::name(contentForm)));
    m_text->setToolTip(m_isImage ? QStringLiteral("各段数据的地址固定，只能改写，不能插入或删除字节")
                                 : QString());
    m_other->setText(m_isImage ? QStringLiteral("按原始字节打开") : QStringLiteral("按地址打开"));
    m_other->setVisible(m_isImage || !isText);
    showFaults(image);
    setVisible(m_isImage || isText || contentForm != HexForm::Bytes);
}

void HexImageBar::showFaults(const HexImage &image)
{
    const qint64 count = image.faults.count();
    m_faultCount->setText(QStringLiteral("%1处问题").arg(count));
    m_faultCount->setVisible(count > 0);
    m_showFaults->setVisible(count > 0);
    m_showFaults->setChecked(false);
    m_faults->hide();
    m_faults->clear();
    for (const HexFault &fault : image.faults.first())
        m_faults->addItem(fault.text());
    if (count > m_faults->count())
        m_faults->addItem(QStringLiteral("另有%1处未列出").arg(count - m_faults->count()));
    const int rows = qBound(1, m_faults->count(), kMaxRows);
    m_faults->setFixedHeight(rows * qMax(m_faults->sizeHintForRow(0), 1) + 2 * m_faults->frameWidth());
}
