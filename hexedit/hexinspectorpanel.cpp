#include "hexinspectorpanel.h"

#include "hexinspector.h"
#include "hexvalueinput.h"
#include "hexvaluelabel.h"
#include "qhexedit.h"
#include "qtmessagetip.h"

#include <QComboBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <utility>

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

constexpr int kFieldWidth = 180; // for a time or a long number
constexpr int kMaxTyped = 64;    // characters
constexpr int kTipMs = 3000;

} // namespace

HexInspectorPanel::HexInspectorPanel(QHexEdit *edit, QWidget *parent)
    : QGroupBox(QStringLiteral("数据解析"), parent)
    , m_edit(edit)
    , m_byteOrder(new QComboBox(this))
    , m_field(new QLineEdit(this))
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
        auto *label = new HexValueLabel(this);
        label->setObjectName(QStringLiteral("inspect_") + values.at(i).name);
        label->setAccessibleName(values.at(i).name);
        connect(label, &HexValueLabel::editWanted, this, [this, i] { beginEditing(i); });
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
    buildField();
    showValues();
}

void HexInspectorPanel::buildField()
{
    m_field->setObjectName(QStringLiteral("editInspected"));
    m_field->setMaxLength(kMaxTyped);
    m_field->installEventFilter(this);
    m_field->hide();
    connect(m_field, &QLineEdit::returnPressed, this, &HexInspectorPanel::write);
}

bool HexInspectorPanel::isBigEndian() const
{
    return m_byteOrder->currentIndex() == 1;
}

// What lies behind a gap is not the rest of a number.
QByteArray HexInspectorPanel::bytes() const
{
    const qint64 begin = m_edit->selectionBegin();
    const qint64 left = m_edit->addresses().endOf(begin, m_edit->size()) - begin;
    return m_edit->document().read(begin, static_cast<int>(qBound<qint64>(0, left, HexInspector::maxBytes)));
}

void HexInspectorPanel::showValues()
{
    const QByteArray present = bytes();
    const auto values = HexInspector::values(present, isBigEndian());
    for (int i = 0; i < values.size(); ++i) {
        m_values.at(i)->setText(values.at(i).text.isEmpty() ? QStringLiteral("-") : values.at(i).text);
        // The complete text, where the window is narrow.
        m_values.at(i)->setToolTip(values.at(i).text.isEmpty()
                                       ? QString()
                                       : values.at(i).text + QStringLiteral("\n双击或按Enter键改写"));
    }
    // The field means other bytes than those that are there now.
    if (m_edited >= 0 && (m_editedAt != m_edit->selectionBegin() || m_before != present))
        endEditing();
}

// ---- editing

void HexInspectorPanel::beginEditing(int index)
{
    QString reason = m_edit->editRefusal();
    m_before = bytes();
    const QString text = HexInspector::values(m_before, isBigEndian()).at(index).text;
    if (reason.isEmpty() && text.isEmpty())
        reason = QStringLiteral("此处的字节没有该类型的值");
    if (!reason.isEmpty()) {
        QtMessageTip::showBelow(m_values.at(index), reason);
        return;
    }
    m_edited = index;
    m_editedAt = m_edit->selectionBegin();
    const QRect label = m_values.at(index)->geometry();
    QRect place(0, 0, qMax(label.width(), kFieldWidth), m_field->sizeHint().height());
    place.moveCenter(label.center());
    place.moveLeft(qMax(0, qMin(label.left(), width() - place.width())));
    place.moveTop(qMax(0, qMin(place.top(), height() - place.height())));
    m_field->setGeometry(place);
    m_field->setAccessibleName(m_values.at(index)->accessibleName());
    m_field->setText(text);
    m_field->setModified(false);
    m_field->selectAll();
    m_field->show();
    m_field->raise();
    m_field->setFocus();
}

void HexInspectorPanel::write()
{
    const QString busy = m_edit->editRefusal();
    const HexValueInput::Input input =
        HexValueInput::read(m_edited, m_field->text(), isBigEndian(), m_before);
    if (!busy.isEmpty() || (m_field->isModified() && !input.fault.isEmpty())) {
        QtMessageTip::showBelow(m_field, busy.isEmpty() ? input.fault : busy, kTipMs);
        return; // what was typed stays
    }
    const bool isChanged = m_field->isModified() && !m_before.startsWith(input.bytes);
    const qint64 at = m_editedAt;
    m_field->setModified(false);
    endEditing();
    if (isChanged)
        m_edit->overwrite(at, input.bytes);
    m_edit->setFocus();
}

void HexInspectorPanel::endEditing()
{
    if (std::exchange(m_edited, -1) < 0)
        return;
    if (m_field->isModified())
        QtMessageTip::showTip(QStringLiteral("未改写：输入后须按Enter键"), kTipMs);
    m_field->hide();
}

bool HexInspectorPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_field && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        m_field->setModified(false);
        endEditing();
        m_edit->setFocus();
        return true;
    }
    if (watched == m_field && event->type() == QEvent::FocusOut) {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
            endEditing();
    }
    return QGroupBox::eventFilter(watched, event);
}
