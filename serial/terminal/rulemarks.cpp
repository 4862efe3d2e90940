#include "rulemarks.h"

#include "linestore.h"
#include "logwindow.h"
#include "sharedrules.h"

#include <QTextEdit>
#include <QTimer>

namespace {

// Of a line that is stored in several blocks: so many characters at its beginning
// decide on its color, and so many beside a block on matches over its edges.
constexpr int kHead = 4096;
constexpr int kContext = 256;

constexpr int kKnownCharacters = 256 * 1024;

bool isPiece(const QTextBlock &block)
{
    return LogLayout::isContinuation(block) || LogLayout::isContinuation(block.next());
}

TextMarks::Marks marksOfSpans(const QVector<RuleColoring::Span> &spans)
{
    TextMarks::Marks marks;
    for (const RuleColoring::Span &span : spans) {
        QTextCharFormat format;
        format.setForeground(QColor(QRgb(span.color)));
        marks.append({span.begin, span.length, format});
    }
    return marks;
}

} // namespace

RuleMarks::RuleMarks(TextMarks *marks, const LogWindow &window, const LineStore &lines, QTextEdit *display)
    : QObject(display)
    , m_marks(marks)
    , m_window(window)
    , m_lines(lines)
    , m_display(display)
    , m_rules(SharedRules::instance())
    , m_known(kKnownCharacters)
{
    connect(&m_rules, &SharedRules::changed, this, &RuleMarks::reload);
    connect(display->document(), &QTextDocument::contentsChange, this, [this] { m_drawn = Blocks(); });
    reload();
}

void RuleMarks::reload()
{
    m_known.clear();
    m_drawn = Blocks();
    if (m_rules.coloring().isEmpty())
        m_marks->setSource(TextMarks::Rules, {});
    else
        m_marks->setSource(TextMarks::Rules, [this](const QTextBlock &block) { return marksOf(block); });
    m_display->viewport()->update();
}

TextMarks::Marks RuleMarks::marksOf(const QTextBlock &block)
{
    const TextMarks::Marks marks = isPiece(block) ? marksOfPiece(block) : marksOfLine(block);
    const QStringList givenUp = m_rules.coloring().takeGivenUp();
    for (const QString &pattern : givenUp)
        QTimer::singleShot(0, this, [this, pattern] { // not while painting
            emit m_rules.changed();
            emit gaveUp(pattern);
        });
    return marks;
}

TextMarks::Marks RuleMarks::marksOfLine(const QTextBlock &block)
{
    const QString text = block.text();
    if (const TextMarks::Marks *known = m_known.object(text))
        return *known;
    RuleColoring &coloring = m_rules.coloring();
    const TextMarks::Marks marks = marksOfSpans(coloring.spans({text}, coloring.lineRuleOf(text)));
    m_known.insert(text, new TextMarks::Marks(marks), text.size() + 1);
    return marks;
}

TextMarks::Marks RuleMarks::marksOfPiece(const QTextBlock &block)
{
    const bool continues = LogLayout::isContinuation(block);
    const bool goesOn = LogLayout::isContinuation(block.next());
    const QString before = continues ? block.previous().text().right(kContext) : QString();
    const QString behind = goesOn ? block.next().text().left(kContext) : QString();
    const RuleColoring::Piece piece{before + block.text() + behind, !continues, !goesOn};
    RuleColoring &coloring = m_rules.coloring();
    const TextMarks::Marks marks = marksOfSpans(coloring.spans(piece, lineRuleOf(block)));
    TextMarks::Marks inBlock;
    for (const QTextLayout::FormatRange &mark : marks) {
        const int begin = qMax(0, mark.start - before.size());
        const int end = qMin(block.length() - 1, mark.start + mark.length - before.size());
        if (end > begin)
            inBlock.append({begin, end - begin, mark.format});
    }
    return inBlock;
}

int RuleMarks::lineRuleOf(const QTextBlock &block)
{
    const int number = block.blockNumber();
    const bool isNext = number == m_drawn.last + 1 && LogLayout::isContinuation(block);
    if (m_drawn.first < 0 || (!isNext && (number < m_drawn.first || number > m_drawn.last)))
        m_drawn = {number, number, m_rules.coloring().lineRuleOf(headOf(block))};
    m_drawn.last = qMax(m_drawn.last, number);
    return m_drawn.lineRule;
}

// The beginning of the line that the block is a piece of. The document may have
// dropped it.
QString RuleMarks::headOf(const QTextBlock &block) const
{
    QTextBlock first = block;
    while (LogLayout::isContinuation(first) && first.previous().isValid())
        first = first.previous();
    if (!first.previous().isValid()) {
        const qint64 line = m_window.lineOf(m_window.rowOf(first));
        const QVector<LineStore::Line> lines = m_lines.lines(line, 1, kHead);
        if (!lines.isEmpty())
            return lines.first().text;
    }
    QString head = first.text();
    for (QTextBlock next = first.next(); head.size() < kHead && LogLayout::isContinuation(next);
         next = next.next())
        head += next.text();
    return head.left(kHead);
}
