#include "pagelamp.h"

#include <QStyle>
#include <QVariant>

#include <algorithm>

PageLamp::PageLamp(const QString &toolTip, QWidget *parent)
    : QLabel(parent)
    , m_toolTip(toolTip)
{
    setProperty("kind", QStringLiteral("lamp"));
    hide();
}

void PageLamp::setState(const QObject *page, const QString &text, bool isFailing)
{
    m_states.erase(std::remove_if(m_states.begin(), m_states.end(),
                                  [page](const State &state) { return state.page == page; }),
                   m_states.end());
    if (!text.isEmpty())
        m_states.append({page, text, isFailing});
    showState();
}

void PageLamp::showPage(const QObject *page)
{
    m_page = page;
    showState();
}

void PageLamp::showState()
{
    setVisible(!m_states.isEmpty());
    if (m_states.isEmpty())
        return;
    const auto current = std::find_if(m_states.begin(), m_states.end(),
                                      [this](const State &state) { return state.page == m_page; });
    const State &shown = current != m_states.end() ? *current : m_states.first();
    setText(shown.text);
    setToolTip(m_toolTip.arg(m_states.size()));
    const QString state = shown.isFailing ? QStringLiteral("failed") : QStringLiteral("on");
    if (property("state") == state)
        return;
    setProperty("state", state);
    style()->unpolish(this);
    style()->polish(this);
}
