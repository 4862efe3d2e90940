#include "hexedit/hexinspectorpanel.h"

#include "hexedit/hexinspector.h"
#include "hexedit/qhexedit.h"

#include <QComboBox>
#include <QLabel>

HexInspectorPanel::HexInspectorPanel(QHexEdit *edit, QWidget *parent)
    : FormGroup(QStringLiteral("数据解析"), parent)
    , m_edit(edit)
    , m_byteOrder(new QComboBox(this))
{
    m_byteOrder->setObjectName(QStringLiteral("comboByteOrder"));
    m_byteOrder->addItems({QStringLiteral("小端"), QStringLiteral("大端")});
    addRow(QStringLiteral("字节序"), m_byteOrder);
    for (const HexInspector::Value &value : HexInspector::values(QByteArray(), false)) {
        auto *label = new QLabel(this);
        label->setObjectName(QStringLiteral("inspect_") + value.name);
        label->setTextFormat(Qt::PlainText);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        label->setFocusPolicy(Qt::NoFocus);
        addRow(value.name, label);
        m_values.append(label);
    }
    connect(m_byteOrder, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &HexInspectorPanel::showValues);
    connect(m_edit, &QHexEdit::stateChanged, this, &HexInspectorPanel::showValues);
    showValues();
}

void HexInspectorPanel::showValues()
{
    const QByteArray bytes = m_edit->document().read(m_edit->selectionBegin(), HexInspector::longest);
    const auto values = HexInspector::values(bytes, m_byteOrder->currentIndex() == 1);
    for (int i = 0; i < values.size(); ++i)
        m_values.at(i)->setText(values.at(i).text.isEmpty() ? QStringLiteral("-") : values.at(i).text);
}
