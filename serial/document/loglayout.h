#pragma once

// A document layout for long logs in one monospaced face: every row has the
// same height, rows break between words where a number of columns is full, and
// only what is drawn is laid out. Taking in new text costs a walk over its
// characters, a new width or font one over the blocks that don't fit a row.
//
// Very long paragraphs are stored as several blocks, see QtTerminalWidget. A
// block that continues the one before is marked and begins in the last row of
// that one. Each block's count of the rows that begin in it is kept in the
// document, whose own line index finds the block at a height.

#include "rowbreaks.h"

#include <QAbstractTextDocumentLayout>
#include <QFont>
#include <QFontMetricsF>
#include <QRawFont>
#include <QTextBlock>
#include <QTextLayout>
#include <QTimer>
#include <QVector>
#include <functional>

class LogLayout : public QAbstractTextDocumentLayout
{
    Q_OBJECT

public:
    explicit LogLayout(QTextDocument *document);

    // A block that continues the paragraph of the block before it.
    static bool isContinuation(const QTextBlock &block);
    static void setContinuation(QTextBlock block, bool continues);
    // To be called when blocks behind this one were marked.
    void recount(int firstBlock);

    // What is marked in a block, in its characters: ranges in order that don't
    // overlap. Asked for each block that is drawn.
    using Marks = QVector<QTextLayout::FormatRange>;
    void setMarks(const std::function<Marks(const QTextBlock &)> &marksOf) { m_marksOf = marksOf; }

    // When a new width or font changes the rows of a long document, those around this
    // position are counted at once and the others a slice at a time; the heights of
    // these are those of before until then.
    void setFocus(int position) { m_focus = position; }
    bool isCounted(int row) const; // the block that the row is of
    void countAll();

    qreal lineHeight() const { return m_lineHeight; }
    // The height at which the row of a character begins.
    qreal rowTop(int position) const;
    // Where the first row that begins in the block starts, in the block.
    int firstRowStart(const QTextBlock &block) const;

    void draw(QPainter *painter, const PaintContext &context) override;
    int hitTest(const QPointF &point, Qt::HitTestAccuracy accuracy) const override;
    int pageCount() const override;
    QSizeF documentSize() const override;
    QRectF frameBoundingRect(QTextFrame *frame) const override;
    QRectF blockBoundingRect(const QTextBlock &block) const override;

signals:
    // Before and behind a slice of counting, which moves what is below.
    void aboutToCount();
    void counted();

protected:
    void documentChanged(int from, int charsRemoved, int charsAdded) override;

private:
    void updateMetrics();
    void layOut(const QTextBlock &block) const;
    void layOutLine(QTextLayout &layout) const;
    static int startColumn(const QTextBlock &block);
    RowBreaks::Start startOf(const QTextBlock &block, int column) const;
    QVector<RowBreaks::Row> rowsOf(const QTextBlock &block) const; // the first may begin in the block before
    void countRows(QTextBlock block, const QTextBlock &end, int unaffected);
    int countRows(QTextBlock block, int start, bool newText);
    void recountAll(int unaffected);
    void countSlice();
    void countPiece();
    void adjustCounted(int from, int charsAdded);
    void notifyChange(qreal changedTop, qreal bottom);
    bool drawPlainLine(QPainter *painter, const QString &line, const QPointF &position,
                       const Marks &marks) const;
    void drawRow(QPainter *painter, const PaintContext &context, const QTextBlock &block, const QString &text,
                 const Marks &marks, const RowBreaks::Row &row, qreal y) const;
    void drawBlock(QPainter *painter, const PaintContext &context, const QTextBlock &block) const;
    qreal top(const QTextBlock &block) const;
    qreal rowsTop(const QTextBlock &block) const;

    qreal m_lineHeight = 1;
    qreal m_ascent = 0;
    qreal m_columnWidth = 1;
    qreal m_width = -1;   // page width that the line counts are for
    int m_columns = 80;   // of one row
    int m_widest = 0;     // columns of a block, at least those of the widest one
    int m_characters = 0; // at the last change
    QSizeF m_notifiedSize;

    int m_focus = 0;
    int m_firstCounted = 0; // blocks before this are to be counted, as are those from m_endCounted on
    int m_endCounted = 0;
    int m_blocks = 1;     // at the last change
    int m_unaffected = 0; // columns of blocks that need not be counted
    QTimer m_counting;    // active while there are some
    std::function<Marks(const QTextBlock &)> m_marksOf;

    QRawFont m_rawFont; // of m_rawFontOf, for lines that need no shaping
    QFont m_rawFontOf;
};
