#include "curvesplit.h"

#include "curvepane.h"
#include "qtterminalwidget.h"
#include "settings.h"

#include <QMenu>
#include <utility>

CurveSplit::CurveSplit(QtTerminalWidget *terminal, QWidget *display, QWidget *parent)
    : QSplitter(Qt::Vertical, parent)
    , m_terminal(terminal)
{
    setObjectName(QStringLiteral("splitRecvCurves"));
    setChildrenCollapsible(false);
    addWidget(display);
}

void CurveSplit::load()
{
    const bool isOpen = Settings::instance().view.curves;
    if (!isOpen)
        return close();
    if (!m_pane)
        open();
    m_pane->load();
    if (m_beside->isChecked() != Settings::instance().view.curvesBeside)
        place();
}

void CurveSplit::open()
{
    m_pane = new CurvePane(m_terminal, this);
    addWidget(m_pane);
    setStretchFactor(0, 1);
    setStretchFactor(1, 1);
    m_pane->menu()->addSeparator();
    m_beside = m_pane->menu()->addAction(QStringLiteral("显示在接收区旁边"));
    m_beside->setCheckable(true);
    connect(m_beside, &QAction::triggered, this, [this](bool beside) {
        Settings::instance().view.curvesBeside.set(beside);
        place();
    });
    connect(m_pane, &CurvePane::notify, this, &CurveSplit::notify);
    connect(m_pane, &CurvePane::closeRequested, this, [this] {
        Settings::instance().view.curves.set(false);
        emit choiceChanged();
    });
    // The keyboard goes from the display to the curves.
    QWidget *last = m_terminal;
    for (QWidget *part : m_pane->findChildren<QWidget *>()) {
        const bool isHere = part->window() == window() && !part->focusProxy(); // not in a list that pops up
        if (!isHere || !(part->focusPolicy() & Qt::TabFocus))
            continue;
        setTabOrder(last, part);
        last = part;
    }
    place();
    m_pane->show();
}

// Not at once: its own button may have asked for it.
void CurveSplit::close()
{
    if (!m_pane)
        return;
    m_pane->completeExport();
    m_pane->hide();
    std::exchange(m_pane, nullptr)->deleteLater();
}

void CurveSplit::place()
{
    const bool beside = Settings::instance().view.curvesBeside;
    m_beside->setChecked(beside);
    m_pane->setNarrow(beside);
    setOrientation(beside ? Qt::Horizontal : Qt::Vertical);
    const int half = (beside ? width() : height()) / 2;
    setSizes({half, half});
}

bool CurveSplit::completeExport()
{
    return !m_pane || m_pane->completeExport();
}
