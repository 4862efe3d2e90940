#include "curvefeed.h"

#include <QElapsedTimer>
#include <utility>

namespace {

constexpr int kBudgetMs = 4;
constexpr int kLines = 64; // read at once
constexpr int kLineBytes = 2 * NumberLines::maxCharacters;
constexpr int kBytes = 64 * 1024;

} // namespace

CurveFeed::CurveFeed(const LineStore &record, QObject *parent)
    : QObject(parent)
    , m_record(record)
    , m_timer(this)
    , m_generation(record.generation())
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &CurveFeed::readSlice);
}

void CurveFeed::start(NumberLines::Form form, const QString &expression)
{
    m_lines.start(form, expression);
    m_curves.clear();
    m_base = 0;
    m_passedOver = 0;
    m_generation = m_record.generation();
    beginBehind(0);
    emit curvesDropped();
    m_timer.start(0);
}

void CurveFeed::clear()
{
    m_lines.restart();
    m_curves.clear();
    m_passedOver = 0;
    m_next = m_record.completeLines();
    emit curvesDropped();
    emit changed();
}

void CurveFeed::setPaused(bool paused)
{
    m_isPaused = paused;
    follow();
}

void CurveFeed::follow()
{
    if (m_generation != m_record.generation()) {
        m_generation = m_record.generation();
        m_base += std::exchange(m_next, 0);
    }
    if (!m_isPaused && m_next < m_record.completeLines() && !m_timer.isActive())
        m_timer.start(0);
}

// The newest lines, none before that one.
void CurveFeed::beginBehind(qint64 line)
{
    m_next = qMax(line, m_record.completeLines() - maxOldLines);
    m_passedOver += m_next - line;
}

void CurveFeed::readSlice()
{
    if (m_isPaused)
        return;
    QElapsedTimer spent;
    spent.start();
    // What could not be shown anyway: each line is a point.
    if (m_record.completeLines() - m_next > 2 * maxOldLines)
        beginBehind(m_next);
    const qint64 before = m_next;
    while (m_next < m_record.completeLines() && spent.elapsed() < kBudgetMs) {
        const qint64 first = m_next;
        readLines(spent);
        if (m_next == first)
            return; // the record cannot be read back
    }
    if (m_next > before)
        emit changed();
    if (m_next < m_record.completeLines())
        m_timer.start(0); // input and painting come in between
}

// Until the time is spent: an expression may take long on each line.
void CurveFeed::readLines(const QElapsedTimer &spent)
{
    const auto count = int(qMin<qint64>(kLines, m_record.completeLines() - m_next));
    for (const LineStore::Line &line : m_record.lines(m_next, count, kLineBytes, kBytes)) {
        const qint64 number = m_base + ++m_next; // from 1 on
        if (line.origin == LineStore::Origin::Sent)
            continue;
        for (const NumberLines::Value &value : m_lines.read(line.text, number, line.arrivalMs)) {
            if (value.curve >= m_curves.size())
                m_curves.resize(value.curve + 1);
            m_curves[value.curve].append({value.value, value.line, value.ms});
        }
        if (spent.elapsed() >= kBudgetMs)
            return;
    }
}
