#include "shell/base/formpanel.h"

#include "shell/base/placeholdertext.h"

#include <QApplication>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QVBoxLayout>

FormGroup::FormGroup(const QString &title, QWidget *parent)
    : QGroupBox(title, parent)
    , m_grid(new QGridLayout(this))
{
    m_grid->setContentsMargins(8, 8, 8, 8);
    m_grid->setHorizontalSpacing(4);
    m_grid->setVerticalSpacing(8);
    m_grid->setColumnStretch(1, 1);
}

QLabel *FormGroup::addRow(const QString &label, QWidget *field)
{
    const int row = m_grid->rowCount();
    auto *caption = new QLabel(label, this);
    caption->setBuddy(field);
    if (qobject_cast<QLineEdit *>(field))
        PlaceholderText::keepFaint(field);
    m_grid->addWidget(caption, row, 0);
    m_grid->addWidget(field, row, 1);
    return caption;
}

void FormGroup::addWide(QWidget *widget)
{
    m_grid->addWidget(widget, m_grid->rowCount(), 0, 1, 2);
}

void FormGroup::addPair(QWidget *left, QWidget *right)
{
    auto *pair = new QHBoxLayout;
    pair->setSpacing(8);
    pair->addWidget(left, 1);
    pair->addWidget(right, 1);
    m_grid->addLayout(pair, m_grid->rowCount(), 0, 1, 2);
}

FormPanel::FormPanel(QWidget *parent)
    : QScrollArea(parent)
    , m_column(nullptr)
{
    setObjectName(QStringLiteral("formPanel"));
    setFixedWidth(panelWidth);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    auto *content = new QWidget;
    m_column = new QVBoxLayout(content);
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(8);
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
// anew when the window comes to the front.
void FormPanel::showFocus(QWidget *before, QWidget *now)
{
    if (before && now && isAncestorOf(now) && now->visibleRegion().isEmpty())
        ensureWidgetVisible(now);
}

void FormPanel::fitWidth()
{
    const QScrollBar *bar = verticalScrollBar();
    const int barWidth = bar->isVisibleTo(this) ? bar->sizeHint().width() : 0;
    // A little air between the groups and the bar.
    m_column->setContentsMargins(0, 0, barWidth > 0 ? 4 : 0, 0);
    const int content = qMax(panelWidth, widget()->minimumSizeHint().width());
    if (const int needed = content + barWidth; needed != width())
        setFixedWidth(needed);
}
