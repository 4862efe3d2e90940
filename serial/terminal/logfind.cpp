#include "logfind.h"

#include "findbar.h"
#include "qtterminalwidget.h"

#include <QElapsedTimer>
#include <utility>

namespace {

constexpr int kBudgetMs = 6; // of one slice
// What is looked through at once, so that a match nearby is shown before the search comes there.
constexpr int kNearLines = 2000;
constexpr int kNearBytes = 256 * 1024;

} // namespace

LogFind::LogFind(QtTerminalWidget *terminal, FindBar *bar)
    : QObject(terminal)
    , m_terminal(terminal)
    , m_bar(bar)
    , m_search(terminal->received().lines())
    , m_filter(terminal->received().lines(), m_search)
    , m_timer(this)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &LogFind::search);
    connect(bar, &FindBar::patternChanged, this, &LogFind::restart);
    connect(bar, &FindBar::filterChanged, this, &LogFind::refilter);
    connect(terminal, &QtTerminalWidget::lineChosen, this, &LogFind::goToLine);
    connect(bar, &FindBar::nextWanted, this, &LogFind::next);
    connect(bar, &FindBar::previousWanted, this, &LogFind::previous);
    connect(bar, &FindBar::closed, this, &LogFind::close);
    connect(terminal, &QtTerminalWidget::findRequested, this, &LogFind::open);
    connect(terminal, &QtTerminalWidget::recordChanged, this, [this] {
        const bool isCleared = m_generation != m_terminal->received().lines().generation();
        if ((m_search.hasMore() || isCleared) && !m_timer.isActive())
            m_timer.start(0);
    });
}

void LogFind::open()
{
    const QString selected = m_terminal->textCursor().selectedText();
    // A paragraph separator stands for a line end in it.
    if (!selected.isEmpty() && !selected.contains(QChar::ParagraphSeparator))
        m_bar->setText(selected);
    const bool wasOpen = m_bar->isVisible();
    m_bar->open();
    if (!wasOpen)
        restart();
}

void LogFind::close()
{
    m_bar->hide();
    m_timer.stop();
    m_pending = Direction::None;
    m_search.start(LineMatcher());
    m_terminal->markMatches(m_search);
    refilter();
    m_terminal->setFocus();
}

void LogFind::restart()
{
    const LineMatcher matcher(m_bar->pattern());
    const LineSearch::Place from = m_current ? m_current->place : m_terminal->topPlace();
    m_current.reset();
    m_index = -1;
    m_search.start(matcher);
    m_terminal->markMatches(m_search);
    m_timer.start(0);
    refilter();
    go(Direction::Forward, from);
    showState();
}

bool LogFind::isFiltering() const
{
    const LineMatcher &matcher = m_search.matcher();
    return m_bar->isFiltering() && !matcher.isEmpty() && matcher.fault().isEmpty() && !m_search.hasGivenUp();
}

void LogFind::refilter()
{
    const bool isOn = isFiltering();
    if (isOn) {
        m_filter.start(m_bar->filterOptions());
        m_filter.update();
        m_timer.start(0);
    }
    if (isOn && m_isFiltered)
        m_terminal->filterChanged();
    else if (isOn != m_isFiltered)
        m_terminal->setFilter(isOn ? &m_filter : nullptr);
    m_isFiltered = isOn;
}

void LogFind::updateFilter()
{
    if (!isFiltering()) // the search has given up
        return refilter();
    if (m_filter.update())
        m_timer.start(0);
    m_terminal->filterGrew();
}

void LogFind::goToLine(qint64 line)
{
    m_bar->endFiltering();
    m_terminal->showMatch({{line, 0}, m_terminal->received().lines().line(line).size()});
}

void LogFind::next()
{
    if (!m_bar->isVisible())
        return open();
    LineSearch::Place from = m_terminal->topPlace();
    if (m_current)
        from = {m_current->place.line, m_current->place.column + 1};
    go(Direction::Forward, from);
}

void LogFind::previous()
{
    if (!m_bar->isVisible())
        return open();
    go(Direction::Backward, m_current ? m_current->place : m_terminal->topPlace());
}

void LogFind::go(Direction direction, const LineSearch::Place &from)
{
    m_pending = Direction::None;
    if (m_search.matcher().isEmpty() || !m_search.matcher().fault().isEmpty())
        return;
    if (direction == Direction::Forward && !m_search.hasPassed(from) && goNearby(from))
        return;
    m_pending = direction;
    m_from = from;
    goPending();
}

// Before the search comes there.
bool LogFind::goNearby(const LineSearch::Place &from)
{
    const LineStore::Extract near = m_terminal->received().lines().extract(from.line, kNearLines, kNearBytes);
    QVector<LineMatcher::Range> found;
    m_search.matcher().find(near.text, &found);
    for (const LineMatcher::Range &range : qAsConst(found)) {
        const int lineBegin = near.text.lastIndexOf(QLatin1Char('\n'), range.begin - near.text.size()) + 1;
        const LineSearch::Place place{from.line + near.text.leftRef(range.begin).count(QLatin1Char('\n')),
                                      range.begin - lineBegin};
        if (place.line == from.line && place.column < from.column)
            continue;
        show({place, range.length});
        return true;
    }
    return false;
}

// At the ends of the record, finding goes on at the other one.
void LogFind::goPending()
{
    if (m_pending == Direction::None || !m_search.hasPassed(m_from))
        return;
    qint64 index = m_search.indexFrom(m_from) - (m_pending == Direction::Backward ? 1 : 0);
    const bool isOutside = index < 0 || index >= m_search.count();
    if (isOutside && m_search.hasMore())
        return;
    m_pending = Direction::None;
    if (isOutside)
        index = index < 0 ? m_search.count() - 1 : 0;
    if (const std::optional<LineSearch::Match> match = m_search.at(index))
        show(*match);
}

void LogFind::show(const LineSearch::Match &match)
{
    m_current = match;
    m_index = -1;
    m_terminal->showMatch(match);
    showState();
}

void LogFind::search()
{
    QElapsedTimer spent;
    spent.start();
    while (m_search.step() && spent.elapsed() < kBudgetMs) {
    }
    const int generation = m_terminal->received().lines().generation();
    if (std::exchange(m_generation, generation) != generation) { // cleared
        m_current.reset();
        m_index = -1;
        refilter();
    } else if (m_isFiltered) {
        updateFilter();
    }
    m_terminal->updateMarks();
    goPending();
    showState();
    if (m_search.hasMore())
        m_timer.start(0);
}

void LogFind::showState()
{
    const LineMatcher &matcher = m_search.matcher();
    if (matcher.isEmpty())
        return m_bar->showState(QString());
    if (!matcher.fault().isEmpty())
        return m_bar->showFault(matcher.fault());
    if (m_search.hasGivenUp())
        return m_bar->showFault(QStringLiteral("表达式过于复杂，已停止查找"));
    if (m_index < 0 && m_current && m_search.hasPassed(m_current->place))
        m_index = m_search.indexFrom(m_current->place);
    const QString count = QString::number(m_search.count());
    if (m_search.count() == 0)
        m_bar->showState(m_search.hasMore() ? QStringLiteral("正在查找…") : QStringLiteral("无结果"));
    else
        m_bar->showState(
            QStringLiteral("%1/%2%3").arg(m_index < 0 ? QStringLiteral("–") : QString::number(m_index + 1),
                                          count, m_search.hasMore() ? QStringLiteral("…") : QString()));
}
