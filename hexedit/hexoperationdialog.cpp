#include "hexoperationdialog.h"

#include "hexparse.h"
#include "qtmessagetip.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <utility>

namespace {

using Kind = HexOperation::Kind;

constexpr int kMaxOperand = 4096; // characters
constexpr int kFieldWidth = 220;

const std::pair<Kind, const char *> kKinds[] = {{Kind::Xor, "异或（XOR）"},
                                                {Kind::And, "与（AND）"},
                                                {Kind::Or, "或（OR）"},
                                                {Kind::Not, "取反（NOT）"},
                                                {Kind::Add, "加"},
                                                {Kind::ShiftLeft, "左移"},
                                                {Kind::ShiftRight, "右移"},
                                                {Kind::RotateLeft, "循环左移"},
                                                {Kind::RotateRight, "循环右移"},
                                                {Kind::SwapBytes, "交换单元内的字节"},
                                                {Kind::ReverseBits, "颠倒每个字节的位"},
                                                {Kind::ReverseOrder, "颠倒所有字节的顺序"}};

QString titleOf(HexOperationDialog::Purpose purpose)
{
    switch (purpose) {
    case HexOperationDialog::Purpose::Fill:
        return QStringLiteral("填充选中内容");
    case HexOperationDialog::Purpose::Insert:
        return QStringLiteral("插入字节");
    default:
        return QStringLiteral("运算");
    }
}

} // namespace

HexOperationDialog::HexOperationDialog(Purpose purpose, int fillByte, QWidget *parent)
    : QtFramelessDialog(titleOf(purpose), parent)
    , m_purpose(purpose)
    , m_grid(new QGridLayout)
    , m_kind(new QComboBox(this))
    , m_count(new QSpinBox(this))
    , m_operand(new QLineEdit(this))
    , m_unit(new QComboBox(this))
    , m_bits(new QSpinBox(this))
    , m_byteOrder(new QComboBox(this))
{
    setObjectName(QStringLiteral("hexOperationDialog"));
    m_grid->setHorizontalSpacing(8);
    m_grid->setVerticalSpacing(4);
    body()->addLayout(m_grid);
    buildFields(fillByte);
    buildButtons();
    for (QComboBox *box : {m_kind, m_unit})
        connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                &HexOperationDialog::showFields);
    showFields();
    (purpose == Purpose::Insert    ? static_cast<QWidget *>(m_count)
     : purpose == Purpose::Operate ? m_kind
                                   : static_cast<QWidget *>(m_operand))
        ->setFocus();
    m_operand->selectAll();
}

void HexOperationDialog::buildFields(int fillByte)
{
    for (const auto &[kind, text] : kKinds)
        m_kind->addItem(QString::fromUtf8(text), static_cast<int>(kind));
    m_count->setRange(1, static_cast<int>(HexTransform::maxLength));
    m_operand->setMaxLength(kMaxOperand);
    if (m_purpose != Purpose::Operate)
        m_operand->setText(HexParse::text(QByteArray(1, static_cast<char>(fillByte))));
    for (const int unit : {1, 2, 4, 8})
        m_unit->addItem(QStringLiteral("%1字节").arg(unit), unit);
    m_byteOrder->addItems({QStringLiteral("小端"), QStringLiteral("大端")});
    add("comboOperation", QStringLiteral("运算"), m_kind);
    add("spinInsertCount", QStringLiteral("字节数"), m_count);
    add("editOperand", QStringLiteral("内容"), m_operand);
    add("comboOperationUnit", QStringLiteral("单元"), m_unit);
    add("spinOperationBits", QStringLiteral("位数"), m_bits);
    add("comboOperationOrder", QStringLiteral("字节序"), m_byteOrder);
}

void HexOperationDialog::add(const char *name, const QString &caption, QWidget *field)
{
    field->setObjectName(QLatin1String(name));
    field->setAccessibleName(caption);
    field->setMinimumWidth(kFieldWidth);
    auto *label = new QLabel(caption, this);
    label->setBuddy(field);
    m_grid->addWidget(label, m_rows.size(), 0);
    m_grid->addWidget(field, m_rows.size(), 1);
    m_rows.append({label, field});
}

void HexOperationDialog::buildButtons()
{
    auto *ok = new QPushButton(QStringLiteral("确定"), this);
    ok->setObjectName(QStringLiteral("btnOperationOk"));
    ok->setProperty("primary", true);
    ok->setDefault(true);
    auto *cancel = new QPushButton(QStringLiteral("取消"), this);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    body()->addLayout(buttons);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
}

HexOperation::Kind HexOperationDialog::kind() const
{
    return m_purpose == Purpose::Operate ? static_cast<Kind>(m_kind->currentData().toInt()) : Kind::Fill;
}

void HexOperationDialog::showFields()
{
    HexOperation chosen;
    chosen.kind = kind();
    if (chosen.kind == Kind::SwapBytes && m_unit->currentIndex() == 0)
        m_unit->setCurrentIndex(1); // there is nothing to swap in one byte
    const int unit = m_unit->currentData().toInt();
    const bool isAddition = chosen.kind == Kind::Add;
    m_bits->setRange(1, 8 * unit - 1);
    m_operand->setPlaceholderText(isAddition ? QStringLiteral("十六进制数，如 1F、-1")
                                             : QStringLiteral("十六进制，如 55 AA"));
    m_operand->setToolTip(isAddition ? QStringLiteral("每个单元加上此数，溢出的位丢弃")
                                     : QStringLiteral("从选中内容的开头起重复"));
    show(m_kind, m_purpose == Purpose::Operate);
    show(m_count, m_purpose == Purpose::Insert);
    show(m_operand, chosen.hasOperand() || isAddition);
    show(m_unit, chosen.hasUnit());
    show(m_bits, chosen.hasBits());
    show(m_byteOrder, chosen.hasUnit() && chosen.kind != Kind::SwapBytes && unit > 1);
    adjustSize();
}

void HexOperationDialog::show(QWidget *field, bool shown)
{
    for (const Row &row : qAsConst(m_rows)) {
        if (row.field == field) {
            row.caption->setVisible(shown);
            field->setVisible(shown);
        }
    }
}

int HexOperationDialog::count() const
{
    return m_count->value();
}

void HexOperationDialog::accept()
{
    m_operation = HexOperation();
    m_operation.kind = kind();
    m_operation.unit = m_unit->currentData().toInt();
    m_operation.isBigEndian = m_byteOrder->currentIndex() == 1;
    m_operation.bits = m_bits->value();
    if (m_operation.kind == Kind::SwapBytes && m_operation.unit == 1) {
        QtMessageTip::showBelow(m_unit, QStringLiteral("单元至少要有2字节"));
        return;
    }
    const bool isRight = m_operation.kind == Kind::Add ? readAddend()
                         : m_operation.hasOperand()    ? readOperand()
                                                       : true;
    if (isRight)
        QtFramelessDialog::accept();
}

bool HexOperationDialog::readOperand()
{
    m_operation.operand = HexParse::bytes(m_operand->text()).value_or(QByteArray());
    if (m_operation.operand.isEmpty())
        QtMessageTip::showBelow(m_operand, QStringLiteral("请输入成对的十六进制字符"));
    return !m_operation.operand.isEmpty();
}

bool HexOperationDialog::readAddend()
{
    QString text = m_operand->text().trimmed();
    const bool isNegative = text.startsWith(QLatin1Char('-'));
    if (isNegative)
        text = text.mid(1);
    bool isNumber = false;
    const quint64 value = text.toULongLong(&isNumber, 16); // with or without "0x"
    isNumber = isNumber && text.at(0).isLetterOrNumber();  // no second sign
    const int unusedBits = 64 - 8 * m_operation.unit;
    if (!isNumber || value > ~quint64(0) >> unusedBits) {
        QtMessageTip::showBelow(m_operand,
                                QStringLiteral("请输入%1字节以内的十六进制数").arg(m_operation.unit));
        return false;
    }
    m_operation.addend = isNegative ? ~value + 1 : value;
    return true;
}
