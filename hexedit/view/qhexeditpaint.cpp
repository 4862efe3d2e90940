// What QHexEdit draws.

#include "contrast.h"
#include "hexcharacters.h"
#include "qhexedit.h"
#include "skin.h"

#include <QApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>

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

QPoint QHexEdit::contentOrigin() const
{
    return {-horizontalScrollBar()->value(), m_layout.rowHeight()};
}

void QHexEdit::paintEvent(QPaintEvent *)
{
    QPainter painter(viewport());
    const SkinPalette &skin = Skin::palette();
    painter.fillRect(viewport()->rect(), QColor(skin.panel));
    if (size() == 0 && m_readOnly) {
        painter.setPen(QColor(skin.secondaryText));
        painter.setFont(QApplication::font());
        painter.drawText(viewport()->rect().adjusted(16, 16, -16, -16), Qt::AlignCenter | Qt::TextWordWrap,
                         m_placeholder);
        return;
    }
    paintHeader(painter);
    painter.translate(contentOrigin());
    const qint64 first = topRow() * HexLayout::bytesPerRow;
    for (int row = 0; row <= visibleRows(); ++row) {
        const qint64 address = first + row * HexLayout::bytesPerRow;
        if (address > size())
            break;
        paintRow(painter, row, address);
    }
    paintCaret(painter);
}

void QHexEdit::paintHeader(QPainter &painter) const
{
    painter.save();
    painter.fillRect(0, 0, viewport()->width(), m_layout.rowHeight(), headerGround(false));
    painter.setPen(headerText(false));
    painter.translate(contentOrigin().x(), 0);
    painter.drawText(m_layout.address(0), Qt::AlignCenter, QStringLiteral("地址"));
    const qint64 column = m_caret % HexLayout::bytesPerRow;
    for (int i = 0; i < HexLayout::bytesPerRow; ++i) {
        if (i == column)
            painter.fillRect(m_layout.hex(0, i), headerGround(true));
        painter.setPen(headerText(i == column));
        painter.drawText(m_layout.hex(0, i), Qt::AlignCenter, pairOf(static_cast<quint8>(i)));
    }
    const QRect text = m_layout.text(0, 0).united(m_layout.text(0, HexLayout::bytesPerRow - 1));
    painter.setPen(headerText(false));
    painter.drawText(text, Qt::AlignCenter, QStringLiteral("文本"));
    painter.restore();
}

void QHexEdit::paintRow(QPainter &painter, int row, qint64 address) const
{
    const QRect place = m_layout.address(row);
    const bool current = m_caret / HexLayout::bytesPerRow == address / HexLayout::bytesPerRow;
    painter.fillRect(place, headerGround(current));
    painter.setPen(headerText(current));
    painter.drawText(
        place, Qt::AlignCenter,
        QStringLiteral("%1").arg(address, m_layout.addressDigits(), 16, QLatin1Char('0')).toUpper());

    const QByteArray bytes = m_document.read(address, HexLayout::bytesPerRow);
    const std::vector<bool> changed = m_document.changes(address, HexLayout::bytesPerRow);
    for (int i = 0; i < bytes.size(); ++i)
        paintByte(painter, row, address + i, static_cast<quint8>(bytes.at(i)),
                  changed[static_cast<size_t>(i)]);
    paintText(painter, row, address);
}

bool QHexEdit::isSelected(qint64 address) const
{
    return address >= selectionBegin() && address < selectionBegin() + selectionLength();
}

QColor QHexEdit::colorOf(qint64 address) const
{
    return isSelected(address) ? onAccent(QColor(Skin::palette().accent)) : QColor(Skin::palette().text);
}

void QHexEdit::paintByte(QPainter &painter, int row, qint64 address, quint8 byte, bool changed) const
{
    const SkinPalette &skin = Skin::palette();
    const QColor accent(skin.accent);
    const int column = static_cast<int>(address % HexLayout::bytesPerRow);
    const bool selected = isSelected(address);
    QRect hex = m_layout.hex(row, column);
    const QRect text = m_layout.text(row, column);
    painter.setPen(colorOf(address));
    if (selected || changed) {
        const QColor ground = selected ? accent : mixed(accent, QColor(skin.panel), 0.3);
        const bool goesOn = selected && isSelected(address + 1) && column + 1 < HexLayout::bytesPerRow;
        const int right = goesOn ? m_layout.hex(row, column + 1).left() : hex.right() + 1;
        painter.fillRect(hex.left(), hex.top(), right - hex.left(), hex.height(), ground);
        painter.fillRect(text, ground);
    }
    if (selected && changed) { // still told apart
        painter.drawLine(hex.bottomLeft(), hex.bottomRight());
        painter.drawLine(text.bottomLeft(), text.bottomRight());
    }
    painter.drawText(hex, Qt::AlignCenter, pairOf(byte));
}

// A character stands at its first byte, over two cells where it is a wide one;
// what cells its bytes have beyond stay blank.
void QHexEdit::paintText(QPainter &painter, int row, qint64 address) const
{
    const auto cells = HexCharacters::cells(m_document, address, HexLayout::bytesPerRow,
                                            m_asciiOnly ? HexCharacters::ascii : m_codec);
    for (int column = 0; column < static_cast<int>(cells.size()); ++column) {
        const HexCharacters::Cell &cell = cells[static_cast<size_t>(column)];
        if (cell.text.isEmpty())
            continue;
        const qint64 at = address + column;
        const bool wide = cell.bytes > 1 && cell.text.at(0).unicode() >= kFirstWide;
        const QRect place = m_layout.text(row, column, wide ? 2 : 1);
        painter.setPen(colorOf(at));
        painter.drawText(place, Qt::AlignCenter | Qt::TextDontClip, cell.text);
        // The other half as its byte, or as what is behind the last cell.
        const bool beyond = column + 1 == HexLayout::bytesPerRow;
        const QColor other = beyond ? QColor(Skin::palette().text) : colorOf(at + 1);
        if (wide && other != colorOf(at)) {
            painter.save();
            painter.setClipRect(m_layout.text(row, column + 1));
            painter.setPen(other);
            painter.drawText(place, Qt::AlignCenter | Qt::TextDontClip, cell.text);
            painter.restore();
        }
    }
}

void QHexEdit::paintCaret(QPainter &painter) const
{
    const qint64 row = m_caret / HexLayout::bytesPerRow - topRow();
    if (row < 0 || row > visibleRows())
        return;
    const int column = static_cast<int>(m_caret % HexLayout::bytesPerRow);
    QRect hex = m_layout.hex(static_cast<int>(row), column);
    const QRect text = m_layout.text(static_cast<int>(row), column);
    // The same byte in the other column.
    painter.setPen(QColor(Skin::palette().secondaryText));
    painter.drawRect((m_inText ? hex : text).adjusted(-1, 0, 0, -1));
    if (!hasFocus() || !m_caretOn)
        return;
    if (!m_inText && m_lowDigit)
        hex.setLeft(hex.left() + m_layout.cellWidth());
    else
        hex.setWidth(m_layout.cellWidth());
    const QRect cell = m_inText ? text : hex;
    if (m_overwrite)
        painter.fillRect(cell.left(), cell.bottom() - 2, cell.width(), 3, QColor(Skin::palette().text));
    else
        painter.fillRect(cell.left() - 1, cell.top(), 2, cell.height(), QColor(Skin::palette().text));
}
