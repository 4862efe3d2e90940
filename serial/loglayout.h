#pragma once

// A document layout for long logs in one monospaced face: every line has the
// same height, lines break after a number of columns, and only what is drawn
// is laid out. Taking in new text costs a walk over its characters.
//
// Each block's line count is kept in the document (its own line index finds
// the block at a height), its columns in the block's user state together with
// a mark that the block continues the paragraph before it: very long
// paragraphs are stored as several blocks, see QtTerminalWidget.

#include <QAbstractTextDocumentLayout>
#include <QFont>
#include <QFontMetricsF>
#include <QRawFont>
#include <QTextBlock>

class QTextLayout;

class LogLayout : public QAbstractTextDocumentLayout
{
    Q_OBJECT

public:
    explicit LogLayout(QTextDocument *document);

    // A block that continues the paragraph of the block before it.
    static bool isContinuation(const QTextBlock &block);
    static void setContinuation(QTextBlock block, bool continues);

    qreal lineHeight() const { return m_lineHeight; }

    // The end of the line that starts at a position, after at most so many
    // columns: one per character, two for wide ones, tabs to multiples of 8.
    static int lineEnd(const QChar *text, int size, int start, int columns);

    void draw(QPainter *painter, const PaintContext &context) override;
    int hitTest(const QPointF &point, Qt::HitTestAccuracy accuracy) const override;
    int pageCount() const override;
    QSizeF documentSize() const override;
    QRectF frameBoundingRect(QTextFrame *frame) const override;
    QRectF blockBoundingRect(const QTextBlock &block) const override;

protected:
    void documentChanged(int from, int charsRemoved, int charsAdded) override;

private:
    void updateMetrics();
    void layOut(const QTextBlock &block) const;
    void layOutLine(QTextLayout &layout) const;
    void countLines(QTextBlock block, bool newText);
    bool drawPlainLine(QPainter *painter, const QString &line, const QPointF &position) const;
    void drawBlock(QPainter *painter, const PaintContext &context, const QTextBlock &block, qreal top) const;
    qreal top(const QTextBlock &block) const;

    qreal m_lineHeight = 1;
    qreal m_ascent = 0;
    qreal m_columnWidth = 1;
    qreal m_width = -1; // page width that the line counts are for
    int m_columns = 80; // of one line
    QSizeF m_sizeTold;

    QRawFont m_rawFont; // of m_rawFontOf, for lines that need no shaping
    QFont m_rawFontOf;
};
