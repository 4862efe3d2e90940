#include "formpanel.h"

#include "placeholdertext.h"

#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTimer>
#include <QVBoxLayout>

namespace {

constexpr int kColumns = 4; // label and field, twice
constexpr int kLabelGap = 4;
constexpr int kFieldGap = 8;

// A label without what only the eye needs: its number and its colon.
QString spokenName(const QString &label)
{
    static const QRegularExpression decoration(QStringLiteral("^\\s*(\\d+\\.)?\\s*|[:\\s]+$"));
    return QString(label).remove(decoration);
}

} // namespace

FormGroup::FormGroup(const QString &title, QWidget *parent)
    : QGroupBox(title, parent)
    , m_grid(new QGridLayout(this))
{
    m_grid->setContentsMargins(8, 4, 8, 6);
    m_grid->setHorizontalSpacing(kLabelGap);
    m_grid->setVerticalSpacing(4);
    m_grid->setColumnStretch(1, 1);
    m_grid->setColumnStretch(3, 1);
}

QLabel *FormGroup::labelFor(const QString &label, QWidget *field)
{
    auto *caption = new QLabel(label, this);
    caption->setBuddy(field);
    if (qobject_cast<QLineEdit *>(field))
        PlaceholderText::keepFaint(field);
    if (field->accessibleName().isEmpty())
        field->setAccessibleName(spokenName(label));
    return caption;
}

QLabel *FormGroup::addRow(const QString &label, QWidget *field)
{
    const int row = m_grid->rowCount();
    QLabel *caption = labelFor(label, field);
    m_grid->addWidget(caption, row, 0);
    m_grid->addWidget(field, row, 1, 1, kColumns - 1);
    return caption;
}

void FormGroup::addRow(const QString &label, QWidget *field, const QString &secondLabel, QWidget *secondField)
{
    const int row = m_grid->rowCount();
    m_grid->addWidget(labelFor(label, field), row, 0);
    m_grid->addWidget(field, row, 1);
    QLabel *second = labelFor(secondLabel, secondField);
    second->setContentsMargins(kFieldGap - kLabelGap, 0, 0, 0);
    m_grid->addWidget(second, row, 2);
    m_grid->addWidget(secondField, row, 3);
}

void FormGroup::addWide(QWidget *widget)
{
    m_grid->addWidget(widget, m_grid->rowCount(), 0, 1, kColumns);
}

void FormGroup::addPair(QWidget *left, QWidget *right)
{
    QHBoxLayout *line = addLine();
    line->addWidget(left, 1);
    line->addWidget(right, 1);
}

QHBoxLayout *FormGroup::addLine()
{
    auto *line = new QHBoxLayout;
    line->setSpacing(kFieldGap);
    m_grid->addLayout(line, m_grid->rowCount(), 0, 1, kColumns);
    return line;
}

QLabel *FormGroup::addTo(QHBoxLayout *line, const QString &label, QWidget *field)
{
    QLabel *caption = labelFor(label, field);
    auto *both = new QHBoxLayout;
    both->setSpacing(kLabelGap);
    both->addWidget(caption);
    both->addWidget(field, 1);
    line->addLayout(both, 1);
    return caption;
}

void FormGroup::setFoldable()
{
    setProperty("foldable", true);
    setCheckable(true);
    connect(this, &QGroupBox::toggled, this, &FormGroup::showRows);
    setChecked(false);
}

void FormGroup::showRows(bool isUnfolded)
{
    const QList<QWidget *> rows = findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget *row : rows)
        row->setVisible(isUnfolded);
    m_grid->setContentsMargins(8, isUnfolded ? 4 : 0, 8, isUnfolded ? 6 : 0);
}

void FormGroup::letShrink(QComboBox *box)
{
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(1);
}

FormPanel::FormPanel(QWidget *parent)
    : QScrollArea(parent)
    , m_column(nullptr)
{
    setFixedWidth(panelWidth);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    auto *content = new QWidget;
    m_column = new QVBoxLayout(content);
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(4); // and the margin above a group's title
    m_column->addStretch();
    setWidget(content);
    content->installEventFilter(this);
    verticalScrollBar()->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, &FormPanel::showFocus);
}

// The focus leaves the fields when they go, and they go after this.
FormPanel::~FormPanel()
{
    qApp->disconnect(this);
}

FormGroup *FormPanel::addGroup(const QString &title)
{
    auto *group = new FormGroup(title);
    addWidget(group);
    return group;
}

void FormPanel::addWidget(QWidget *widget)
{
    m_column->insertWidget(m_column->count() - 1, widget);
    // What was unfolded may be below the panel's edge. Once it has its height.
    if (auto *group = qobject_cast<QGroupBox *>(widget))
        connect(group, &QGroupBox::toggled, this, [this, group](bool isUnfolded) {
            if (isUnfolded)
                QTimer::singleShot(0, group, [this, group] { ensureWidgetVisible(group, 0, 0); });
        });
}

bool FormPanel::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Show:
    case QEvent::Hide:
    case QEvent::LayoutRequest:
        fitWidth();
        break;
    default:
        break;
    }
    return QScrollArea::eventFilter(watched, event);
}

// A scroll area follows the keyboard only while that stays inside. What a mouse
// presses is seen already, and must not move under it; nor is anything shown
// again when the window comes to the front.
void FormPanel::showFocus(QWidget *before, QWidget *now)
{
    if (before && now && isAncestorOf(now) && now->visibleRegion().isEmpty())
        ensureWidgetVisible(now);
}

void FormPanel::fitWidth()
{
    const QScrollBar *bar = verticalScrollBar();
    const int barWidth = bar->isVisibleTo(this) ? bar->sizeHint().width() : 0;
    // A little air between the groups, which keep their width, and the bar.
    const int margin = barWidth > 0 ? 4 : 0;
    m_column->setContentsMargins(0, 0, margin, 0);
    const int content = qMax(panelWidth + margin, widget()->minimumSizeHint().width());
    if (const int needed = content + barWidth; needed != width())
        setFixedWidth(needed);
}
