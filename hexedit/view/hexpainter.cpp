#include "hexpainter.h"

#include "contrast.h"
#include "hexcharacters.h"
#include "skin.h"

#include <QPainter>

#include <algorithm>

namespace {

constexpr ushort kFirstWide = 0x0250; // Latin letters are narrow

QColor mixed(const QColor &over, const QColor &ground, double share)
{
    return QColor::fromRgbF(over.redF() * share + ground.redF() * (1 - share),
                            over.greenF() * share + ground.greenF() * (1 - share),
                            over.blueF() * share + ground.blueF() * (1 - share));
}

// Under the column numbers and the addresses: a shade of what is beside it, as
// the headers of tables are.
QColor headerGround(bool current)
{
    const SkinPalette &skin = Skin::palette();
    const QColor ground = mixed(QColor(skin.secondaryText), QColor(skin.panel), 0.12);
    return current ? mixed(QColor(skin.accent), ground, 0.3) : ground;
}

QColor headerText(bool current)
{
    return QColor(current ? Skin::palette().text : Skin::palette().secondaryText);
}

QColor onAccent(const QColor &accent)
{
    return Contrast::ratio(Qt::black, accent) >= Contrast::ratio(Qt::white, accent) ? Qt::black : Qt::white;
}

QString pairOf(quint8 byte)
{
    const char digits[] = "0123456789ABCDEF";
    return QString(QLatin1Char(digits[byte >> 4])) + QLatin1Char(digits[byte & 15]);
}

} // namespace

QColor HexMark::ground(int color)
{
    static const QColor colors[] = {QColor(0xf0, 0xb4, 0x2a), QColor(0x3c, 0xb4, 0x5a),
                                    QColor(0x3a, 0x8e, 0xe0), QColor(0xd0, 0x55, 0xc0),
                                    QColor(0xe0, 0x5a, 0x46), QColor(0x2a, 0xb0, 0xb0)};
    return mixed(colors[static_cast<size_t>(color) % (sizeof colors / sizeof *colors)],
                 QColor(Skin::palette().panel), 0.4);
}

HexPainter::HexPainter(QPainter *painter, const HexContent &content, const HexRows &rows,
                       const HexLayout &layout, const View &view)
    : m_painter(*painter)
    , m_content(content)
    , m_rows(rows)
    , m_layout(layout)
    , m_view(view)
    , m_caret(rows.placeOf(content.caret()))
{
}

void HexPainter::paint()
{
    paintHeader();
    m_painter.translate(m_view.origin);
    const qint64 count = m_rows.count();
    for (int row = 0; row <= m_view.rows && m_view.topRow + row < count; ++row)
        paintRow(row, m_rows.row(m_view.topRow + row));
    paintCaret();
}

void HexPainter::paintHeader()
{
    m_painter.save();
    m_painter.fillRect(0, 0, m_view.width, m_layout.rowHeight(), headerGround(false));
    m_painter.setPen(headerText(false));
    m_painter.translate(m_view.origin.x(), 0);
    m_painter.drawText(m_layout.address(0), Qt::AlignCenter, QStringLiteral("地址"));
    const int column = m_caret.column;
    for (int i = 0; i < m_layout.bytes(); ++i) {
        if (i == column)
            m_painter.fillRect(m_layout.hex(0, i), headerGround(true));
        m_painter.setPen(headerText(i == column));
        m_painter.drawText(m_layout.hex(0, i), Qt::AlignCenter, pairOf(static_cast<quint8>(i)));
    }
    const QRect text = m_layout.text(0, 0).united(m_layout.text(0, m_layout.bytes() - 1));
    m_painter.setPen(headerText(false));
    m_painter.drawText(text, Qt::AlignCenter, QStringLiteral("文本"));
    m_painter.restore();
}

void HexPainter::paintRow(int row, const HexRows::Row &line)
{
    const QRect place = m_layout.address(row);
    const bool current = m_caret.row == m_view.topRow + row;
    m_painter.fillRect(place, headerGround(current));
    m_painter.setPen(headerText(current));
    m_painter.drawText(
        place, Qt::AlignCenter,
        QStringLiteral("%1").arg(line.address, m_layout.addressDigits(), 16, QLatin1Char('0')).toUpper());

    paintMarks(row, line);
    const int count = static_cast<int>(line.end - line.begin);
    const QByteArray bytes = m_content.document().read(line.begin, count);
    const std::vector<bool> changed = m_content.document().changes(line.begin, count);
    for (int i = 0; i < bytes.size(); ++i)
        paintByte(row, line.column + i, line.begin + i, static_cast<quint8>(bytes.at(i)),
                  changed[static_cast<size_t>(i)]);
    paintText(row, line);
    if (line.isBehindGap)
        m_painter.fillRect(0, place.top(), m_layout.width(), 1, QColor(Skin::palette().secondaryText));
}

// Below what says that a byte is selected or changed. Few marks are expected.
void HexPainter::paintMarks(int row, const HexRows::Row &line)
{
    if (!m_view.marks)
        return;
    for (const HexMark &mark : *m_view.marks) {
        const qint64 begin = std::max(mark.begin, line.begin);
        const qint64 end = std::min(mark.end, line.end);
        if (begin >= end)
            continue;
        const int first = line.column + static_cast<int>(begin - line.begin);
        const int last = line.column + static_cast<int>(end - 1 - line.begin);
        for (const QRect &area : {m_layout.hex(row, first).united(m_layout.hex(row, last)),
                                  m_layout.text(row, first).united(m_layout.text(row, last))})
            m_painter.fillRect(area, HexMark::ground(mark.color));
    }
}

QColor HexPainter::colorOf(qint64 address) const
{
    return m_content.isSelected(address) ? onAccent(QColor(Skin::palette().accent))
                                         : QColor(Skin::palette().text);
}

void HexPainter::paintByte(int row, int column, qint64 address, quint8 byte, bool changed)
{
    const SkinPalette &skin = Skin::palette();
    const QColor accent(skin.accent);
    const bool selected = m_content.isSelected(address);
    QRect hex = m_layout.hex(row, column);
    const QRect text = m_layout.text(row, column);
    m_painter.setPen(colorOf(address));
    if (selected || changed) {
        const QColor ground = selected ? accent : mixed(accent, QColor(skin.panel), 0.3);
        const bool goesOn = selected && m_content.isSelected(address + 1) && column + 1 < m_layout.bytes();
        const int right = goesOn ? m_layout.hex(row, column + 1).left() : hex.right() + 1;
        m_painter.fillRect(hex.left(), hex.top(), right - hex.left(), hex.height(), ground);
        m_painter.fillRect(text, ground);
    }
    if (selected && changed) { // still visible as changed
        m_painter.drawLine(hex.bottomLeft(), hex.bottomRight());
        m_painter.drawLine(text.bottomLeft(), text.bottomRight());
    }
    m_painter.drawText(hex, Qt::AlignCenter, pairOf(byte));
}

// A character is drawn at its first byte, over two cells if it is a wide one;
// further cells of its bytes stay blank.
void HexPainter::paintText(int row, const HexRows::Row &line)
{
    const auto cells = HexCharacters::cells(m_content.document(), line.begin,
                                            static_cast<int>(line.end - line.begin), m_content.shownCodec());
    for (int i = 0; i < static_cast<int>(cells.size()); ++i) {
        const QString &text = cells[static_cast<size_t>(i)];
        if (text.isEmpty())
            continue;
        const int column = line.column + i;
        const qint64 at = line.begin + i;
        const bool wide = text.at(0).unicode() >= kFirstWide;
        const QRect place = m_layout.text(row, column, wide ? 2 : 1);
        m_painter.setPen(colorOf(at));
        m_painter.drawText(place, Qt::AlignCenter | Qt::TextDontClip, text);
        // The other half in the color of its byte, or of the ground behind the last cell.
        const bool beyond = column + 1 == m_layout.bytes();
        const QColor other = beyond ? QColor(Skin::palette().text) : colorOf(at + 1);
        if (wide && other != colorOf(at)) {
            m_painter.save();
            m_painter.setClipRect(m_layout.text(row, column + 1));
            m_painter.setPen(other);
            m_painter.drawText(place, Qt::AlignCenter | Qt::TextDontClip, text);
            m_painter.restore();
        }
    }
}

void HexPainter::paintCaret()
{
    const qint64 row = m_caret.row - m_view.topRow;
    if (row < 0 || row > m_view.rows)
        return;
    const int column = m_caret.column;
    QRect hex = m_layout.hex(static_cast<int>(row), column);
    const QRect text = m_layout.text(static_cast<int>(row), column);
    // The same byte in the other column.
    m_painter.setPen(QColor(Skin::palette().secondaryText));
    m_painter.drawRect((m_content.isInText() ? hex : text).adjusted(-1, 0, 0, -1));
    if (!m_view.isCaretOn)
        return;
    if (!m_content.isInText() && m_content.isOnLowDigit())
        hex.setLeft(hex.left() + m_layout.cellWidth());
    else
        hex.setWidth(m_layout.cellWidth());
    const QRect cell = m_content.isInText() ? text : hex;
    if (m_content.isOverwrite())
        m_painter.fillRect(cell.left(), cell.bottom() - 2, cell.width(), 3, QColor(Skin::palette().text));
    else
        m_painter.fillRect(cell.left() - 1, cell.top(), 2, cell.height(), QColor(Skin::palette().text));
}
