#include "serial/loglayout.h"

#include <QGlyphRun>
#include <QPainter>
#include <QTextDocument>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kTabColumns = 8;
constexpr int kContinuationBit = 1;
constexpr int kForcedBreak = 1 << 16; // columns noted for a line separator: its block never fits one line

// Characters that are drawn as the glyph that the face has for them, whatever
// stands beside them: printable ASCII, and Chinese with its punctuation.
inline bool isPlain(QChar character)
{
    const ushort unit = character.unicode();
    return (unit >= 0x20 && unit <= 0x7E) || (unit >= 0x3001 && unit <= 0x3020) ||
           (unit >= 0x4E00 && unit <= 0x9FFF) || (unit >= 0xFF01 && unit <= 0xFF60);
}

// Columns that a character takes. Everything that is not surely narrow counts
// as wide: too early a break is harmless, too late a one hides text.
inline int columnsOf(ushort unit)
{
    return unit < 0x0250 ? 1 : 2;
}

} // namespace

LogLayout::LogLayout(QTextDocument *document)
    : QAbstractTextDocumentLayout(document)
{
    updateMetrics();
}

bool LogLayout::isContinuation(const QTextBlock &block)
{
    const int state = block.userState();
    return state >= 0 && (state & kContinuationBit) != 0;
}

void LogLayout::setContinuation(QTextBlock block, bool continues)
{
    const int state = qMax(0, block.userState());
    block.setUserState(continues ? state | kContinuationBit : state & ~kContinuationBit);
}

void LogLayout::updateMetrics()
{
    const QFont font = document()->defaultFont();
    const QFontMetricsF metrics(font);
    if (m_rawFontOf != font) {
        m_rawFontOf = font;
        m_rawFont = QRawFont::fromFont(font);
    }
    m_columnWidth = qMax<qreal>(1, metrics.horizontalAdvance(QLatin1Char('0')));
    m_ascent = std::ceil(metrics.ascent());
    m_lineHeight = qMax<qreal>(1, m_ascent + std::ceil(metrics.descent()));
    const qreal room = m_width - 2 * document()->documentMargin();
    m_columns = m_width < 0 ? 1 << 20 : qMax(2, static_cast<int>(room / m_columnWidth));
}

// Draws a line whose characters each stand for one glyph in their columns,
// without shaping it first. False when the face lacks one of them.
bool LogLayout::drawPlainLine(QPainter *painter, const QString &line, const QPointF &position) const
{
    const QVector<quint32> glyphs = m_rawFont.glyphIndexesForString(line);
    if (glyphs.size() != line.size() || glyphs.contains(0))
        return false;
    QVector<QPointF> positions(line.size());
    int column = 0;
    for (int i = 0; i < line.size(); ++i) {
        positions[i] = QPointF(column * m_columnWidth, 0);
        column += columnsOf(line.at(i).unicode());
    }
    QGlyphRun run;
    run.setRawFont(m_rawFont);
    run.setGlyphIndexes(glyphs);
    run.setPositions(positions);
    painter->drawGlyphRun(position + QPointF(0, m_ascent), run);
    return true;
}

int LogLayout::lineEnd(const QChar *text, int size, int start, int columns)
{
    int used = 0;
    for (int i = start; i < size; ++i) {
        const ushort unit = text[i].unicode();
        const bool pair = QChar::isHighSurrogate(unit) && i + 1 < size && text[i + 1].isLowSurrogate();
        used += unit == '\t' ? kTabColumns - used % kTabColumns : columnsOf(unit);
        if (used > columns && i > start)
            return i;
        if (unit == QChar::LineSeparator)
            return i + 1;
        if (pair)
            ++i;
    }
    return size;
}

void LogLayout::countLines(QTextBlock block, bool newText)
{
    const int state = block.userState();
    const int continuation = state < 0 ? 0 : state & kContinuationBit;
    int columns = state < 0 ? 0 : state >> 1;
    int lines = 1;
    if (newText || state < 0) {
        // Nearly all text is a line that fits; one walk finds that out.
        const QString text = block.text();
        columns = 0;
        bool simple = true;
        for (const QChar character : text) {
            const ushort unit = character.unicode();
            simple = simple && unit != '\t' && unit != QChar::LineSeparator && columnsOf(unit) == 1;
            columns += unit == '\t'                   ? kTabColumns
                       : unit == QChar::LineSeparator ? kForcedBreak
                                                      : columnsOf(unit);
        }
        if (columns > m_columns) {
            if (simple) {
                lines = (columns + m_columns - 1) / m_columns;
            } else {
                lines = 0;
                for (int start = 0; start < text.size(); ++lines)
                    start = lineEnd(text.constData(), text.size(), start, m_columns);
            }
        }
        block.setUserState(columns << 1 | continuation);
    } else if (columns > m_columns) {
        const QString text = block.text();
        lines = 0;
        for (int start = 0; start < text.size(); ++lines)
            start = lineEnd(text.constData(), text.size(), start, m_columns);
    }
    if (block.lineCount() != lines)
        block.setLineCount(lines);
}

void LogLayout::documentChanged(int from, int charsRemoved, int charsAdded)
{
    Q_UNUSED(charsRemoved)
    const qreal width = document()->pageSize().width();
    const bool widthChanged = !qFuzzyCompare(width, m_width);
    m_width = width;
    updateMetrics();

    // Up to a block found once: each block would have to work its position out.
    QTextBlock block = widthChanged ? document()->firstBlock() : document()->findBlock(from);
    const QTextBlock end = widthChanged ? document()->end() : document()->findBlock(from + charsAdded).next();
    const qreal changedTop = top(block);
    for (; block.isValid() && block != end; block = block.next()) {
        block.clearLayout();
        countLines(block, !widthChanged);
    }

    // The document counts new blocks before it tells; what was told last counts.
    const QSizeF size = documentSize();
    const QSizeF sizeBefore = m_sizeTold;
    m_sizeTold = size;
    if (size != sizeBefore)
        emit documentSizeChanged(size);
    // What stands below moves when the height changes at the front.
    const bool toTheEnd = charsRemoved > 0 || !block.isValid() || widthChanged;
    const qreal bottom = toTheEnd ? qMax(size.height(), sizeBefore.height()) : top(block);
    emit update(QRectF(0, changedTop, qMax<qreal>(width, 0), bottom - changedTop));
}

qreal LogLayout::top(const QTextBlock &block) const
{
    return document()->documentMargin() + (block.isValid() ? block.firstLineNumber() : 0) * m_lineHeight;
}

QSizeF LogLayout::documentSize() const
{
    return {qMax<qreal>(m_width, 0),
            document()->lineCount() * m_lineHeight + 2 * document()->documentMargin()};
}

int LogLayout::pageCount() const
{
    return 1;
}

QRectF LogLayout::frameBoundingRect(QTextFrame *frame) const
{
    Q_UNUSED(frame)
    return {QPointF(0, 0), documentSize()};
}

QRectF LogLayout::blockBoundingRect(const QTextBlock &block) const
{
    if (!block.isValid())
        return {};
    // Cursor movement and cursor rectangles read the block's own layout.
    if (block.layout()->lineCount() == 0)
        layOut(block);
    return {0, top(block), qMax<qreal>(m_width, 0), block.lineCount() * m_lineHeight};
}

// Lays out a whole block with the line breaks that are drawn.
void LogLayout::layOut(const QTextBlock &block) const
{
    QTextLayout *layout = block.layout();
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAnywhere);
    option.setTabStopDistance(kTabColumns * m_columnWidth);
    layout->setTextOption(option);
    layout->setFont(document()->defaultFont());
    const QString text = block.text();
    layout->beginLayout();
    int start = 0;
    for (int number = 0;; ++number) {
        QTextLine line = layout->createLine();
        if (!line.isValid())
            break;
        const int lineStop = lineEnd(text.constData(), text.size(), start, m_columns);
        line.setNumColumns(qMax(1, lineStop - start));
        line.setPosition(QPointF(document()->documentMargin(), number * m_lineHeight));
        start = line.textStart() + line.textLength();
    }
    layout->endLayout();
}

void LogLayout::layOutLine(QTextLayout &layout) const
{
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    option.setTabStopDistance(kTabColumns * m_columnWidth);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    if (line.isValid()) {
        line.setLineWidth(1e6);
        // One baseline for all lines, whatever face a character falls back to.
        line.setPosition(QPointF(0, m_ascent - line.ascent()));
    }
    layout.endLayout();
}

void LogLayout::drawBlock(QPainter *painter, const PaintContext &context, const QTextBlock &block,
                          qreal y) const
{
    const QString text = block.text();
    const int blockStart = block.position();
    const qreal margin = document()->documentMargin();
    int start = 0;
    do {
        const int end = lineEnd(text.constData(), text.size(), start, m_columns);
        const bool visible =
            !context.clip.isValid() || (y + m_lineHeight > context.clip.top() && y < context.clip.bottom());
        if (visible) {
            const bool lastLine = end >= text.size();
            QVector<QTextLayout::FormatRange> selections;
            for (const Selection &selection : context.selections) {
                const int from = qMax(selection.cursor.selectionStart() - blockStart, start) - start;
                const int to = qMin(selection.cursor.selectionEnd() - blockStart, end) - start;
                if (to > from)
                    selections.append({from, to - from, selection.format});
                // A selected line end shows as half a column behind the text.
                const bool endSelected = lastLine &&
                                         selection.cursor.selectionEnd() > blockStart + text.size() &&
                                         selection.cursor.selectionStart() <= blockStart + text.size();
                if (endSelected) {
                    const qreal x = margin + qMin(end - start, m_columns) * m_columnWidth;
                    painter->fillRect(QRectF(x, y, m_columnWidth / 2, m_lineHeight),
                                      selection.format.background());
                }
            }
            const QString line = text.mid(start, end - start);
            const bool plain = selections.isEmpty() && std::all_of(line.begin(), line.end(), isPlain);
            if (!line.isEmpty() && !(plain && drawPlainLine(painter, line, QPointF(margin, y)))) {
                QTextLayout layout(line, document()->defaultFont(), painter->device());
                layOutLine(layout);
                layout.draw(painter, QPointF(margin, y), selections);
            }
        }
        y += m_lineHeight;
        start = end;
    } while (start < text.size());
}

void LogLayout::draw(QPainter *painter, const PaintContext &context)
{
    const qreal clipTop = context.clip.isValid() ? context.clip.top() : 0;
    const int firstLine = qMax(0, static_cast<int>((clipTop - document()->documentMargin()) / m_lineHeight));
    QTextBlock block = document()->findBlockByLineNumber(firstLine);
    painter->setPen(context.palette.color(QPalette::Text));
    for (qreal y = top(block); block.isValid(); block = block.next()) {
        if (context.clip.isValid() && y > context.clip.bottom())
            break;
        drawBlock(painter, context, block, y);
        y += block.lineCount() * m_lineHeight;
    }
}

int LogLayout::hitTest(const QPointF &point, Qt::HitTestAccuracy accuracy) const
{
    const qreal margin = document()->documentMargin();
    const int lineNumber = static_cast<int>(std::floor((point.y() - margin) / m_lineHeight));
    const int lines = document()->lineCount();
    if (lineNumber < 0 || lineNumber >= lines) {
        if (accuracy == Qt::ExactHit)
            return -1;
        return lineNumber < 0 ? 0 : document()->characterCount() - 1;
    }
    const QTextBlock block = document()->findBlockByLineNumber(lineNumber);
    const QString text = block.text();
    int start = 0;
    for (int skip = lineNumber - block.firstLineNumber(); skip > 0 && start < text.size(); --skip)
        start = lineEnd(text.constData(), text.size(), start, m_columns);
    const int end = lineEnd(text.constData(), text.size(), start, m_columns);
    QTextLayout layout(text.mid(start, end - start), document()->defaultFont());
    layOutLine(layout);
    const qreal x = point.x() - margin;
    if (accuracy == Qt::ExactHit && (x < 0 || x > layout.lineAt(0).naturalTextWidth()))
        return -1;
    const int inLine = end > start ? layout.lineAt(0).xToCursor(x) : 0;
    return block.position() + start + inLine;
}
