#include "matchmarks.h"

#include "linesearch.h"
#include "logwindow.h"

#include <QEvent>
#include <QPainter>
#include <QScrollBar>

namespace {

// Of a mark on the bar, in pixels.
constexpr int kHeight = 2;
constexpr int kWidth = 4;

constexpr int kContext = 256; // characters before and behind a block, for a match over its edge

// Readable below the text of all skins, and beside the selection.
const QColor kInText(255, 200, 0, 110);
const QColor kOnBar(255, 170, 0);

} // namespace

MatchMarks::MatchMarks(TextMarks *marks, const LogWindow &window, QScrollBar *bar)
    : QWidget(bar)
    , m_marks(marks)
    , m_window(window)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    bar->installEventFilter(this);
    hide();
}

void MatchMarks::show(const LineSearch &search)
{
    m_search = &search;
    const bool isOn = !search.matcher().isEmpty();
    if (isOn)
        m_marks->setSource(TextMarks::Matches, [this](const QTextBlock &block) { return marksOf(block); });
    else
        m_marks->setSource(TextMarks::Matches, {});
    resize(parentWidget()->size());
    setVisible(isOn);
    update();
}

bool MatchMarks::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize)
        resize(parentWidget()->size());
    return QWidget::eventFilter(watched, event);
}

// Paragraphs are taken for equally high. A filter shows nothing but matches.
void MatchMarks::paintEvent(QPaintEvent *)
{
    if (!m_search || m_window.isFiltered())
        return;
    QPainter painter(this);
    const qint64 first = m_window.firstRow();
    const qint64 rows = m_window.lastRow() - first + 1;
    const int marks = qMax(1, height() / kHeight);
    for (int i = 0; i < marks; ++i) {
        const qint64 begin = first + rows * i / marks;
        const qint64 end = qMax(begin + 1, first + rows * (i + 1) / marks);
        if (m_search->lines().isAnyIn(begin, end))
            painter.fillRect(width() - kWidth, i * kHeight, kWidth, kHeight, kOnBar);
    }
}

TextMarks::Marks MatchMarks::marksOf(const QTextBlock &block) const
{
    const QString before =
        LogLayout::isContinuation(block) ? block.previous().text().right(kContext) : QString();
    const QString behind =
        LogLayout::isContinuation(block.next()) ? block.next().text().left(kContext) : QString();
    QVector<LineMatcher::Range> found;
    m_search->matcher().find(before + block.text() + behind, &found);
    TextMarks::Marks marks;
    QTextCharFormat format;
    format.setBackground(kInText);
    for (const LineMatcher::Range &range : qAsConst(found)) {
        const int begin = qMax(0, range.begin - before.size());
        const int end = qMin(block.length() - 1, range.begin + range.length - before.size());
        if (end > begin)
            marks.append({begin, end - begin, format});
    }
    return marks;
}
