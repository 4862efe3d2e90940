#include "basemarks.h"

#include "logwindow.h"
#include "receivedtext.h"
#include "terminaldocument.h"

#include <QWidget>

namespace {

constexpr int kReadLines = 200;
constexpr int kBefore = 20; // of them before the line that is asked for

const QColor kSent(30, 130, 220);

// The sixteen colors of terminals, a cube of 6 x 6 x 6, and 24 grays.
QColor colorOf(int index)
{
    static const QRgb named[16] = {0x000000, 0xCD3131, 0x0DBC79, 0xC5C510, 0x2472C8, 0xBC3FBC,
                                   0x11A8CD, 0xE5E5E5, 0x666666, 0xF14C4C, 0x23D18B, 0xF5F543,
                                   0x3B8EEA, 0xD670D6, 0x29B8DB, 0xFFFFFF};
    if ((index & TextStyle::isRgb) != 0)
        return QColor(QRgb(index & 0xFFFFFF));
    if (index < 16)
        return QColor(named[index]);
    if (index >= 232)
        return QColor(8 + 10 * (index - 232), 8 + 10 * (index - 232), 8 + 10 * (index - 232));
    const auto level = [](int step) { return step == 0 ? 0 : 55 + 40 * step; };
    const int cube = index - 16;
    return QColor(level(cube / 36), level(cube / 6 % 6), level(cube % 6));
}

} // namespace

BaseMarks::BaseMarks(TextMarks *marks, const LogWindow &window, const ReceivedText &received,
                     const QWidget *display)
    : m_marks(marks)
    , m_window(window)
    , m_received(received)
    , m_display(display)
{
}

void BaseMarks::show(bool styles, bool sent)
{
    m_styles = styles;
    m_sent = sent;
    if (styles || sent)
        m_marks->setSource(TextMarks::BaseStyles, [this](const QTextBlock &block) { return marksOf(block); });
    else
        m_marks->setSource(TextMarks::BaseStyles, {});
}

bool BaseMarks::isSent(qint64 line)
{
    const LineStore &lines = m_received.lines();
    const bool isRead = line >= m_firstRead && line < m_firstRead + m_read.size();
    if (!isRead || m_generation != lines.generation()) {
        m_generation = lines.generation();
        m_firstRead = qMax<qint64>(0, line - kBefore);
        m_read = lines.lines(m_firstRead, kReadLines, 1);
    }
    const qint64 at = line - m_firstRead;
    return at < m_read.size() && m_read.at(int(at)).origin == LineStore::Origin::Sent;
}

QTextCharFormat BaseMarks::formatOf(const TextStyle &style) const
{
    const QPalette &colors = m_display->palette();
    QTextCharFormat format;
    int text = style.text;
    int ground = style.ground;
    if (style.isInverse)
        qSwap(text, ground);
    const bool hasGround = ground >= 0 || style.isInverse;
    if (hasGround)
        format.setBackground(ground >= 0 ? colorOf(ground) : colors.color(QPalette::Text));
    if (text >= 0)
        format.setForeground(colorOf(text));
    else if (hasGround) // corrected where it can't be read on it
        format.setForeground(colors.color(style.isInverse ? QPalette::Base : QPalette::Text));
    if (style.isBold)
        format.setFontWeight(QFont::Bold);
    if (style.isItalic)
        format.setFontItalic(true);
    if (style.isUnderlined)
        format.setFontUnderline(true);
    return format;
}

TextMarks::Marks BaseMarks::marksOf(const QTextBlock &block)
{
    int before = 0; // characters of the line before the block
    QTextBlock first = block;
    while (LogLayout::isContinuation(first) && first.previous().isValid()) {
        first = first.previous();
        before += first.length() - 1;
    }
    before += m_window.droppedOf(first);
    const qint64 line = m_window.lineOf(m_window.rowOf(first));
    const int length = block.length() - 1;
    if (m_sent && isSent(line)) {
        QTextCharFormat format;
        format.setForeground(kSent);
        return {{0, length, format}};
    }
    TextMarks::Marks marks;
    if (!m_styles)
        return marks;
    for (const StyledRun &run : m_received.styles().of(line)) {
        const int begin = qMax(0, run.begin - before);
        const int end = qMin(length, run.begin + run.length - before);
        if (end > begin)
            marks.append({begin, end - begin, formatOf(run.style)});
    }
    return marks;
}
