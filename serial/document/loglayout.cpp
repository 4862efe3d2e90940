#include "loglayout.h"

#include <QElapsedTimer>
#include <QGlyphRun>
#include <QPainter>
#include <QTextDocument>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// A block's user state: a mark that it continues the paragraph before it (1
// bit), the column at which its first row then begins (10), its columns (20).
constexpr int kContinuationBit = 1;
constexpr int kStartShift = 1;
constexpr int kMaxRowColumns = 1000;
constexpr int kStartMask = 0x3FF << kStartShift;
constexpr int kColumnsShift = 11;
constexpr int kMaxBlockColumns = 0xFFFFF;

// Blocks whose rows are counted at once when all change, then at a time, and for
// how long in one go.
constexpr int kCountedAtOnce = 4000;
constexpr int kCountedPiece = 500;
constexpr int kCountingBudgetMs = 4;

// Characters whose glyph does not depend on their neighbours: printable ASCII,
// and Chinese with its punctuation.
inline bool isPlain(QChar character)
{
    const ushort unit = character.unicode();
    return (unit >= 0x20 && unit <= 0x7E) || (unit >= 0x3001 && unit <= 0x3020) ||
           (unit >= 0x4E00 && unit <= 0x9FFF) || (unit >= 0xFF01 && unit <= 0xFF60);
}

// What a QTextLine counts: a pair of surrogates is one glyph.
int codePoints(const QStringRef &text)
{
    return static_cast<int>(
        std::count_if(text.begin(), text.end(), [](QChar unit) { return !unit.isLowSurrogate(); }));
}

bool hasOnlyColors(const QTextCharFormat &format)
{
    const int colors = (format.hasProperty(QTextFormat::ForegroundBrush) ? 1 : 0) +
                       (format.hasProperty(QTextFormat::BackgroundBrush) ? 1 : 0);
    return format.propertyCount() == colors;
}

// Of a format, what decides on the glyphs; a selection that is drawn does not.
QTextCharFormat faceOf(const QTextCharFormat &format)
{
    QTextCharFormat face;
    face.setFontWeight(format.fontWeight());
    face.setFontItalic(format.fontItalic());
    return face;
}

} // namespace

LogLayout::LogLayout(QTextDocument *document)
    : QAbstractTextDocumentLayout(document)
{
    updateMetrics();
    m_counting.setSingleShot(true);
    connect(&m_counting, &QTimer::timeout, this, &LogLayout::countSlice);
}

bool LogLayout::isContinuation(const QTextBlock &block)
{
    const int state = block.userState();
    return state >= 0 && (state & kContinuationBit) != 0;
}

void LogLayout::setContinuation(QTextBlock block, bool continues)
{
    const int state = qMax(0, block.userState());
    block.setUserState(continues ? state | kContinuationBit : state & ~(kContinuationBit | kStartMask));
}

int LogLayout::startColumn(const QTextBlock &block)
{
    return qMax(0, block.userState() & kStartMask) >> kStartShift;
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
    m_columns =
        m_width < 0 ? kMaxRowColumns : qBound(2, static_cast<int>(room / m_columnWidth), kMaxRowColumns);
}

// Draws a line whose characters each stand for one glyph in their columns,
// without shaping it first. False when the face lacks one of them.
bool LogLayout::drawPlainLine(QPainter *painter, const QString &line, const QPointF &position,
                              const Marks &marks) const
{
    const QVector<quint32> glyphs = m_rawFont.glyphIndexesForString(line);
    if (glyphs.size() != line.size() || glyphs.contains(0))
        return false;
    QVector<QPointF> positions(line.size() + 1);
    int column = 0;
    for (int i = 0; i < line.size(); ++i) {
        positions[i] = QPointF(column * m_columnWidth, 0);
        column += RowBreaks::columnsOf(line.at(i).unicode());
    }
    positions[line.size()] = QPointF(column * m_columnWidth, 0);
    const auto drawGlyphs = [&](int begin, int end) {
        if (end <= begin)
            return;
        QGlyphRun run;
        run.setRawFont(m_rawFont);
        run.setRawData(glyphs.constData() + begin, positions.constData() + begin, end - begin);
        painter->drawGlyphRun(position + QPointF(0, m_ascent), run);
    };
    const QPen pen = painter->pen();
    int drawn = 0;
    for (const QTextLayout::FormatRange &mark : marks) {
        const int end = mark.start + mark.length;
        const qreal x = positions.at(mark.start).x();
        drawGlyphs(drawn, mark.start);
        if (mark.format.hasProperty(QTextFormat::BackgroundBrush))
            painter->fillRect(QRectF(position.x() + x, position.y(), positions.at(end).x() - x, m_lineHeight),
                              mark.format.background());
        if (mark.format.hasProperty(QTextFormat::ForegroundBrush))
            painter->setPen(mark.format.foreground().color());
        drawGlyphs(mark.start, end);
        painter->setPen(pen);
        drawn = end;
    }
    drawGlyphs(drawn, line.size());
    return true;
}

// The row that a block's first characters are in: begun by the block before,
// whose last character says whether it may break between the two.
RowBreaks::Start LogLayout::startOf(const QTextBlock &block, int column) const
{
    return {column, column > 0 && RowBreaks::breaksBehind(document()->characterAt(block.position() - 2))};
}

QVector<RowBreaks::Row> LogLayout::rowsOf(const QTextBlock &block) const
{
    return RowBreaks::rows(block.text(), m_columns, startOf(block, startColumn(block)));
}

// Counts the columns of new text, and the rows that begin in the block. Returns
// the column behind the block's last character.
int LogLayout::countRows(QTextBlock block, int start, bool newText)
{
    const int state = block.userState();
    int columns = qMax(0, state) >> kColumnsShift;
    if (newText || state < 0) {
        // Nearly all text is a line that fits; one walk finds that out.
        columns = qMin(RowBreaks::maxColumnsOf(block.text()), kMaxBlockColumns);
        m_widest = qMax(m_widest, start + columns);
    }
    int rows = start > 0 ? 0 : 1; // a row belongs to the block that it begins in
    int column = start + columns;
    if (column > m_columns) {
        const QString text = block.text();
        const auto find = columns == text.size() ? RowBreaks::narrowRow : RowBreaks::row;
        RowBreaks::Row row = find(text, 0, m_columns, startOf(block, start));
        for (; row.end < text.size(); ++rows)
            row = find(text, row.end, m_columns, {});
        column = row.endColumn;
    }
    const int newState =
        columns << kColumnsShift | start << kStartShift | (state > 0 ? state & kContinuationBit : 0);
    if (newState != state)
        block.setUserState(newState);
    if (block.lineCount() != rows)
        block.setLineCount(rows);
    return column;
}

// New text has no unaffected columns; otherwise blocks up to so many are as
// they were.
void LogLayout::countRows(QTextBlock block, const QTextBlock &end, int unaffected)
{
    const bool newText = unaffected < 0;
    int behind = -1; // the column behind the block before, once it is known
    for (; block.isValid() && block != end; block = block.next()) {
        const int state = block.userState();
        if (state >= 0 && (state & kContinuationBit) == 0 && state >> kColumnsShift <= unaffected) {
            behind = state >> kColumnsShift;
            continue;
        }
        block.clearLayout();
        int start = 0;
        if (isContinuation(block) && block != document()->firstBlock())
            start = behind < 0 ? startColumn(block) : qMin(behind, m_columns);
        behind = countRows(block, start, newText);
    }
}

void LogLayout::documentChanged(int from, int charsRemoved, int charsAdded)
{
    const qreal width = document()->pageSize().width();
    const int characters = document()->characterCount();
    // A new width or font changes no text: the columns are known.
    const bool sameText =
        !qFuzzyCompare(width, m_width) ||
        (from == 0 && charsRemoved == 0 && charsAdded == characters && characters == m_characters);
    const int columnsBefore = m_columns;
    m_characters = characters;
    m_width = width;
    updateMetrics();
    if (characters == 1)
        m_widest = 0;
    if (sameText && m_widest <= qMin(columnsBefore, m_columns)) { // all blocks fit a row as before
        notifyChange(0, -1);
        return;
    }

    if (sameText)
        return recountAll(qMin(columnsBefore, m_columns));
    adjustCounted(from, charsAdded);

    // Up to a block found once: each block would have to work its position out.
    const QTextBlock first = document()->findBlock(from);
    const QTextBlock end = document()->findBlock(from + charsAdded).next();
    // What is marked in the blocks before may depend on the text.
    const qreal changedTop = m_marksOf && isContinuation(first) ? 0 : rowsTop(first);
    countRows(first, end, -1);
    // What stands below moves when the height changes at the front.
    const bool toTheEnd = charsRemoved > 0 || !end.isValid();
    notifyChange(changedTop, toTheEnd ? -1 : top(end));
}

// ---- a new width or font

void LogLayout::recountAll(int unaffected)
{
    m_unaffected = m_counting.isActive() ? qMin(m_unaffected, unaffected) : unaffected;
    QTextBlock first = document()->findBlock(m_focus);
    const int focus = first.isValid() ? first.blockNumber() : m_blocks - 1;
    first = document()->findBlockByNumber(qMax(0, focus - kCountedAtOnce / 2));
    while (isContinuation(first) && first.previous().isValid())
        first = first.previous();
    m_firstCounted = m_endCounted = first.blockNumber();
    m_counting.start(0);
    while (m_counting.isActive() && m_endCounted - m_firstCounted < kCountedAtOnce)
        countPiece();
    notifyChange(0, -1);
}

// Behind the blocks counted, then before them. Of a paragraph, all blocks.
void LogLayout::countPiece()
{
    const bool isBehind = m_endCounted < document()->blockCount();
    QTextBlock first =
        document()->findBlockByNumber(isBehind ? m_endCounted : qMax(0, m_firstCounted - kCountedPiece));
    while (isContinuation(first) && first.previous().isValid())
        first = first.previous();
    QTextBlock end = document()->findBlockByNumber(isBehind ? m_endCounted + kCountedPiece : m_firstCounted);
    while (end.isValid() && isContinuation(end))
        end = end.next();
    countRows(first, end, m_unaffected);
    if (isBehind)
        m_endCounted = end.isValid() ? end.blockNumber() : document()->blockCount();
    else
        m_firstCounted = first.blockNumber();
    if (m_firstCounted == 0 && m_endCounted >= document()->blockCount())
        m_counting.stop();
}

void LogLayout::countSlice()
{
    emit aboutToCount();
    QElapsedTimer spent;
    spent.start();
    m_counting.start(0);
    do {
        countPiece();
    } while (m_counting.isActive() && spent.elapsed() < kCountingBudgetMs);
    notifyChange(0, -1);
    emit counted();
}

void LogLayout::countAll()
{
    if (!m_counting.isActive())
        return;
    while (m_counting.isActive())
        countPiece();
    notifyChange(0, -1);
}

bool LogLayout::isCounted(int row) const
{
    if (!m_counting.isActive())
        return true;
    const QTextBlock block = document()->findBlockByLineNumber(row);
    return !block.isValid() || (block.blockNumber() >= m_firstCounted && block.blockNumber() < m_endCounted);
}

// Text changes at the ends; blocks there are counted as they change.
void LogLayout::adjustCounted(int from, int charsAdded)
{
    const int blocks = document()->blockCount();
    const int more = blocks - std::exchange(m_blocks, blocks);
    if (!m_counting.isActive())
        return;
    const bool isAtEnd = from + charsAdded >= document()->characterCount() - 1;
    if (isAtEnd && from > 0) {
        m_endCounted = m_endCounted >= blocks - more ? blocks : qMin(m_endCounted, blocks);
        m_firstCounted = qMin(m_firstCounted, m_endCounted);
        return;
    }
    m_firstCounted = qBound(0, m_firstCounted + more, blocks);
    m_endCounted = qBound(m_firstCounted, m_endCounted + more, blocks);
}

void LogLayout::recount(int firstBlock)
{
    const QTextBlock first = document()->findBlockByNumber(qMax(0, firstBlock));
    countRows(first, document()->end(), 0);
    notifyChange(rowsTop(first), -1);
}

// A bottom of -1 is that of the document.
void LogLayout::notifyChange(qreal changedTop, qreal bottom)
{
    // The document counts new blocks before it notifies; compare with the last size.
    const QSizeF size = documentSize();
    const QSizeF sizeBefore = m_notifiedSize;
    m_notifiedSize = size;
    if (size != sizeBefore)
        emit documentSizeChanged(size);
    if (bottom < 0)
        bottom = qMax(size.height(), sizeBefore.height());
    emit update(QRectF(0, changedTop, qMax<qreal>(m_width, 0), bottom - changedTop));
}

// Of the first row that shows text of the block, whose beginning may be the
// block's before.
qreal LogLayout::rowsTop(const QTextBlock &block) const
{
    return top(block) - (startColumn(block) > 0 ? m_lineHeight : 0);
}

qreal LogLayout::rowTop(int position) const
{
    const QTextBlock block = document()->findBlock(position);
    const QVector<RowBreaks::Row> rows = rowsOf(block);
    int row = 0;
    while (row + 1 < rows.size() && rows.at(row).end <= position - block.position())
        ++row;
    return rowsTop(block) + row * m_lineHeight;
}

int LogLayout::firstRowStart(const QTextBlock &block) const
{
    return startColumn(block) > 0 ? rowsOf(block).first().end : 0;
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
    if (block.layout()->lineCount() == 0 || block.layout()->font() != document()->defaultFont())
        layOut(block);
    const qreal y = rowsTop(block);
    return {0, y, qMax<qreal>(m_width, 0), top(block) - y + block.lineCount() * m_lineHeight};
}

// Lays out a whole block with the row breaks that are drawn.
void LogLayout::layOut(const QTextBlock &block) const
{
    QTextLayout *layout = block.layout();
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAnywhere);
    option.setTabStopDistance(RowBreaks::tabColumns * m_columnWidth);
    layout->setTextOption(option);
    layout->setFont(document()->defaultFont());
    const QVector<RowBreaks::Row> rows = rowsOf(block);
    layout->beginLayout();
    for (int number = 0; number < rows.size(); ++number) {
        const RowBreaks::Row &row = rows.at(number);
        if (row.end == row.start && number + 1 < rows.size())
            continue; // nothing of it fits behind the block before
        QTextLine line = layout->createLine();
        if (!line.isValid())
            break;
        line.setNumColumns(qMax(1, codePoints(block.text().midRef(row.start, row.end - row.start))));
        line.setPosition(
            QPointF(document()->documentMargin() + row.startColumn * m_columnWidth, number * m_lineHeight));
    }
    layout->endLayout();
}

void LogLayout::layOutLine(QTextLayout &layout) const
{
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    option.setTabStopDistance(RowBreaks::tabColumns * m_columnWidth);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    if (line.isValid()) {
        line.setLineWidth(1e6);
        // One baseline for all lines, also where characters fall back to another face.
        line.setPosition(QPointF(0, m_ascent - line.ascent()));
    }
    layout.endLayout();
}

void LogLayout::drawRow(QPainter *painter, const PaintContext &context, const QTextBlock &block,
                        const QString &text, const Marks &marks, const RowBreaks::Row &row, qreal y) const
{
    const int blockStart = block.position();
    const qreal x = document()->documentMargin() + row.startColumn * m_columnWidth;
    const bool endsParagraph = row.end >= text.size() && !isContinuation(block.next());
    Marks selections;
    Marks faces;
    for (const QTextLayout::FormatRange &mark : marks) {
        const int from = qMax(mark.start, row.start);
        const int to = qMin(mark.start + mark.length, row.end);
        if (to > from)
            selections.append({from - row.start, to - from, mark.format});
        if (to > from && !hasOnlyColors(mark.format))
            faces.append({from - row.start, to - from, faceOf(mark.format)});
    }
    bool onlyColors = faces.isEmpty();
    for (const Selection &selection : context.selections) {
        const int selectionEnd = selection.cursor.selectionEnd() - blockStart;
        const int from = qMax(selection.cursor.selectionStart() - blockStart, row.start) - row.start;
        const int to = qMin(selectionEnd, row.end) - row.start;
        if (to > from)
            selections.append({from, to - from, selection.format});
        onlyColors = onlyColors && to <= from;
        // A selected line end shows as half a column behind the text.
        if (endsParagraph && selectionEnd > text.size() && from <= text.size() - row.start)
            painter->fillRect(QRectF(x + qMin(row.end - row.start, m_columns) * m_columnWidth, y,
                                     m_columnWidth / 2, m_lineHeight),
                              selection.format.background());
    }
    const QString line = text.mid(row.start, row.end - row.start);
    const bool plain = onlyColors && std::all_of(line.begin(), line.end(), isPlain);
    if (!line.isEmpty() && !(plain && drawPlainLine(painter, line, QPointF(x, y), selections))) {
        QTextLayout layout(line, document()->defaultFont(), painter->device());
        layout.setFormats(faces);
        layOutLine(layout);
        layout.draw(painter, QPointF(x, y), selections);
    }
}

void LogLayout::drawBlock(QPainter *painter, const PaintContext &context, const QTextBlock &block) const
{
    const QString text = block.text();
    const Marks marks = m_marksOf ? m_marksOf(block) : Marks();
    qreal y = rowsTop(block);
    for (const RowBreaks::Row &row : rowsOf(block)) {
        if (!context.clip.isValid() || (y + m_lineHeight > context.clip.top() && y < context.clip.bottom()))
            drawRow(painter, context, block, text, marks, row, y);
        y += m_lineHeight;
    }
}

void LogLayout::draw(QPainter *painter, const PaintContext &context)
{
    const qreal clipTop = context.clip.isValid() ? context.clip.top() : 0;
    const int firstLine = qMax(0, static_cast<int>((clipTop - document()->documentMargin()) / m_lineHeight));
    QTextBlock block = document()->findBlockByLineNumber(firstLine);
    painter->setPen(context.palette.color(QPalette::Text));
    for (; block.isValid(); block = block.next()) {
        // The row on top of a block may have been begun by the one before.
        if (context.clip.isValid() && rowsTop(block) > context.clip.bottom())
            break;
        drawBlock(painter, context, block);
    }
}

int LogLayout::hitTest(const QPointF &point, Qt::HitTestAccuracy accuracy) const
{
    const qreal margin = document()->documentMargin();
    const int rowNumber = static_cast<int>(std::floor((point.y() - margin) / m_lineHeight));
    const int rowCount = document()->lineCount();
    if (rowNumber < 0 || rowNumber >= rowCount) {
        if (accuracy == Qt::ExactHit)
            return -1;
        return rowNumber < 0 ? 0 : document()->characterCount() - 1;
    }
    QTextBlock block = document()->findBlockByLineNumber(rowNumber);
    // The last row of a block may go on with the next block.
    const auto goesOn = [&](const QTextBlock &next) {
        return next.isValid() && startColumn(next) > 0 && rowNumber + 1 == next.firstLineNumber() &&
               point.x() >= margin + startColumn(next) * m_columnWidth && firstRowStart(next) > 0;
    };
    while (goesOn(block.next()))
        block = block.next();
    const QString text = block.text();
    const QVector<RowBreaks::Row> rows = rowsOf(block);
    const int inBlock =
        static_cast<int>(std::lround((margin + rowNumber * m_lineHeight - rowsTop(block)) / m_lineHeight));
    const RowBreaks::Row &row = rows.at(qBound(0, inBlock, rows.size() - 1));
    QTextLayout layout(text.mid(row.start, row.end - row.start), document()->defaultFont());
    layOutLine(layout);
    const qreal x = point.x() - margin - row.startColumn * m_columnWidth;
    if (accuracy == Qt::ExactHit && (x < 0 || x > layout.lineAt(0).naturalTextWidth()))
        return -1;
    const int inRow = row.end > row.start ? layout.lineAt(0).xToCursor(x) : 0;
    return block.position() + row.start + inRow;
}
