#include "logmargin.h"

#include "loglayout.h"
#include "logwindow.h"
#include "terminaldocument.h"

#include <QAbstractScrollArea>
#include <QPainter>
#include <QScrollBar>

namespace {

constexpr int kSpace = 6; // pixels on both sides
constexpr qint64 kMaxRead = 4096;

} // namespace

LogMargin::LogMargin(TerminalDocument *document, const LogWindow &window, const LineStore &lines,
                     QAbstractScrollArea *display)
    : QWidget(display)
    , m_document(document)
    , m_window(window)
    , m_lines(lines)
    , m_display(display)
{
    setObjectName(QStringLiteral("logMargin"));
    hide();
}

int LogMargin::wantedWidth() const
{
    QString widest;
    if (m_hasNumbers)
        widest = QString::number(qMax<qint64>(9999, m_lines.size()));
    if (!m_stamp.isEmpty())
        widest +=
            (m_hasNumbers ? QStringLiteral(" ") : QString()) + QString(m_stamp.columns(), QLatin1Char('0'));
    return widest.isEmpty() ? 0 : fontMetrics().horizontalAdvance(widest) + 2 * kSpace;
}

void LogMargin::placeBeside(const QRect &text)
{
    const int width = wantedWidth();
    setVisible(width > 0);
    setGeometry(text.left() - width, text.top(), width, text.height());
    update();
}

QVector<LogMargin::Row> LogMargin::rowsInView() const
{
    QVector<Row> rows;
    const LogLayout *layout = m_document->layout();
    const int top = m_display->verticalScrollBar()->value();
    const int bottom = top + height();
    QTextBlock block = m_document->findBlock(layout->hitTest(QPointF(0, top), Qt::FuzzyHit));
    qint64 row = m_window.rowOf(block);
    for (; block.isValid(); block = block.next()) {
        const int y = qRound(layout->rowTop(block.position()));
        if (y >= bottom)
            break;
        if (!LogLayout::isContinuation(block))
            rows.append({y - top, m_window.lineOf(row)});
        row += LogLayout::isContinuation(block.next()) ? 0 : 1;
    }
    return rows;
}

QString LogMargin::withStamps(int start, int end, const LineStamp &stamp) const
{
    QStringList lines = m_document->textBetween(start, end).split(QLatin1Char('\n'));
    qint64 row = m_window.rowOf(m_document->findBlock(start));
    for (QString &text : lines) {
        const qint64 line = m_window.lineOf(row++);
        const QVector<LineStore::Line> found = m_lines.lines(qMax<qint64>(0, line - 1), line > 0 ? 2 : 1, 1);
        const bool isNoLine = text.isEmpty() && &text == &lines.last(); // behind the last line end
        if (!found.isEmpty() && !isNoLine)
            text.prepend(stamp.prefix(found.last(), found.first().arrivalMs));
    }
    return lines.join(QLatin1Char('\n'));
}

void LogMargin::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QPalette colors = m_display->palette(); // a style sheet keeps them from this widget
    painter.fillRect(rect(), colors.brush(QPalette::Base));
    QColor faint = colors.color(QPalette::Text);
    faint.setAlpha(160);
    painter.setPen(faint);
    const QVector<Row> rows = rowsInView();
    // Lines that follow each other, as nearly always, are read together.
    QVector<LineStore::Line> read;
    qint64 first = -1; // of what was read
    for (const Row &row : rows) {
        const qint64 before = qMax<qint64>(0, row.line - 1);
        if (!m_stamp.isEmpty() && (first < 0 || before < first || row.line >= first + read.size())) {
            const bool isDense = rows.last().line - row.line < 2 * rows.size();
            const int count = static_cast<int>((isDense ? rows.last().line : row.line) - before + 1);
            read = m_lines.lines(before, count, 1, kMaxRead);
            first = before;
        }
        QString text = m_hasNumbers ? QString::number(row.line + 1) : QString();
        if (first >= 0 && row.line - first < read.size()) {
            const LineStore::Line &line = read.at(static_cast<int>(row.line - first));
            const qint64 previousMs = read.at(static_cast<int>(before - first)).arrivalMs;
            text += (text.isEmpty() ? QString() : QStringLiteral(" ")) + m_stamp.text(line, previousMs);
        }
        painter.drawText(QRect(0, row.top, width() - kSpace, fontMetrics().height()), Qt::AlignRight, text);
    }
}
