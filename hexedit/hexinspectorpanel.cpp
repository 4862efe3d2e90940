#include "hexinspectorpanel.h"

#include "hexinspector.h"
#include "qhexedit.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>

namespace {

// Where each value stands, in the order of HexInspector::values(), and a long
// text of its column: nothing moves while the caret does.
struct Place
{
    int row;
    int column;
    const char *widestText;
};
constexpr Place kPlaces[] = {{0, 0, "-128"},
                             {1, 0, "-128"},
                             {0, 1, "-32768"},
                             {1, 1, "-32768"},
                             {0, 2, "-1.17549435e-38"},
                             {1, 2, "-1.17549435e-38"},
                             {0, 3, "-9223372036854775808"},
                             {1, 3, "-9223372036854775808"},
                             {2, 2, "-1.17549435e-38"},
                             {2, 3, "-9223372036854775808"},
                             {2, 0, "-128"},
                             {2, 1, "-32768"},
                             {3, 3, ""}};

} // namespace

HexInspectorPanel::HexInspectorPanel(QHexEdit *edit, QWidget *parent)
    : QGroupBox(QStringLiteral("数据解析"), parent)
    , m_edit(edit)
    , m_byteOrder(new QComboBox(this))
{
    setObjectName(QStringLiteral("hexInspector"));
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(8, 4, 8, 4);
    grid->setHorizontalSpacing(6);
    grid->setVerticalSpacing(2);
    const auto values = HexInspector::values(QByteArray(), false);
    for (int i = 0; i < values.size(); ++i) {
        const Place &place = kPlaces[i];
        auto *caption = new QLabel(values.at(i).name, this);
        auto *label = new QLabel(this);
        label->setObjectName(QStringLiteral("inspect_") + values.at(i).name);
        label->setAccessibleName(values.at(i).name);
        label->setTextFormat(Qt::PlainText);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        label->setFocusPolicy(Qt::NoFocus);
        label->setMinimumWidth(label->fontMetrics().horizontalAdvance(QLatin1String(place.widestText)));
        const bool wide = place.row == 3; // its name begins in the column before
        grid->addWidget(caption, place.row, 2 * place.column - (wide ? 2 : 0), 1, wide ? 3 : 1);
        grid->addWidget(label, place.row, 2 * place.column + 1);
        m_values.append(label);
    }
    m_byteOrder->setObjectName(QStringLiteral("comboByteOrder"));
    m_byteOrder->setAccessibleName(QStringLiteral("字节序"));
    m_byteOrder->addItems({QStringLiteral("小端"), QStringLiteral("大端")});
    auto *caption = new QLabel(QStringLiteral("字节序"), this);
    caption->setBuddy(m_byteOrder);
    grid->addWidget(caption, 3, 0);
    grid->addWidget(m_byteOrder, 3, 1, 1, 3, Qt::AlignLeft);
    grid->setColumnStretch(7, 1);
    connect(m_byteOrder, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &HexInspectorPanel::showValues);
    connect(m_edit, &QHexEdit::stateChanged, this, &HexInspectorPanel::showValues);
    showValues();
}

void HexInspectorPanel::showValues()
{
    // What lies behind a gap is not the rest of a number.
    const qint64 begin = m_edit->selectionBegin();
    const qint64 left = m_edit->addresses().endOf(begin, m_edit->size()) - begin;
    const QByteArray bytes =
        m_edit->document().read(begin, static_cast<int>(qBound<qint64>(0, left, HexInspector::maxBytes)));
    const auto values = HexInspector::values(bytes, m_byteOrder->currentIndex() == 1);
    for (int i = 0; i < values.size(); ++i) {
        m_values.at(i)->setText(values.at(i).text.isEmpty() ? QStringLiteral("-") : values.at(i).text);
        m_values.at(i)->setToolTip(values.at(i).text); // where the window is narrow
    }
}
