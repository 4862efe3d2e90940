// Keyboard, mouse and input method of QHexEdit.

#include "hexeditcommands.h"
#include "qhexedit.h"
#include "qtmessagetip.h"
#include "textcodec.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QScrollBar>

namespace {

constexpr int kDragScrollMs = 30;

} // namespace

// ---- keyboard

void QHexEdit::keyPressEvent(QKeyEvent *event)
{
    if (m_commands->runKey(event))
        return;
    if (event->matches(QKeySequence::ZoomIn) ||
        (event->key() == Qt::Key_Equal && event->modifiers() == Qt::ControlModifier))
        zoom(1);
    else if (event->matches(QKeySequence::ZoomOut))
        zoom(-1);
    else if (event->key() == Qt::Key_0 && event->modifiers() == Qt::ControlModifier)
        zoom(0);
    else if (!moveByKey(event) && !editByKey(event))
        QAbstractScrollArea::keyPressEvent(event);
}

bool QHexEdit::moveByKey(const QKeyEvent *event)
{
    constexpr int row = HexLayout::bytesPerRow;
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    const bool control = event->modifiers() & Qt::ControlModifier;
    // Behind the last byte of a selected row one is still in that row.
    const qint64 rowStart = (shift && m_caret > m_anchor ? m_caret - 1 : m_caret) / row * row;
    const qint64 page = qint64(visibleRows()) * row;
    qint64 to = m_caret;
    switch (event->key()) {
    case Qt::Key_Left:
        to = m_caret - 1;
        break;
    case Qt::Key_Right:
        to = m_caret + 1;
        break;
    case Qt::Key_Up:
        to = m_caret >= row ? m_caret - row : m_caret;
        break;
    case Qt::Key_Down:
        to = m_caret + row <= size() ? m_caret + row : m_caret;
        break;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown: {
        const bool up = event->key() == Qt::Key_PageUp;
        verticalScrollBar()->setValue(verticalScrollBar()->value() + (up ? -visibleRows() : visibleRows()));
        to = up ? (m_caret >= page ? m_caret - page : m_caret % row)
                : (m_caret + page <= size() ? m_caret + page : size());
        break;
    }
    case Qt::Key_Home:
        to = control ? 0 : rowStart;
        break;
    case Qt::Key_End:
        to = control ? size() : qMin(rowStart + row - (shift ? 0 : 1), size());
        break;
    default:
        return false;
    }
    moveCaret(to, shift);
    return true;
}

// The two columns come first, then the next widget.
bool QHexEdit::focusNextPrevChild(bool next)
{
    if (next == m_inText)
        return QAbstractScrollArea::focusNextPrevChild(next);
    setInText(next);
    return true;
}

bool QHexEdit::editByKey(const QKeyEvent *event)
{
    if (event->key() == Qt::Key_Insert && event->modifiers() == Qt::NoModifier) {
        setOverwrite(!m_overwrite);
        return true;
    }
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        if (selectionLength() > 0)
            deleteSelection();
        else if (event->key() == Qt::Key_Backspace && m_lowDigit && m_beforeDigit)
            takeDigitBack();
        else
            deleteAt(event->key() == Qt::Key_Delete ? m_caret : m_caret - 1);
        return true;
    }
    const QString text = event->text();
    if (text.isEmpty() || !text.at(0).isPrint() ||
        (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)))
        return false;
    typeText(text);
    return true;
}

// An image whose bytes move is no longer the image.
bool QHexEdit::refuseShift() const
{
    if (m_overwrite)
        QtMessageTip::showTip(QStringLiteral("改写模式下不能删除字节，按Insert键切换到插入模式"), 3000);
    return m_overwrite;
}

void QHexEdit::typeText(const QString &text)
{
    if (refuseEdit())
        return;
    if (m_inText) {
        putBytes(TextCodec::encode(text, m_codec), HexDocument::Step::Typing);
        return;
    }
    for (const QChar character : text) {
        bool isDigit = false;
        const int digit = QString(character).toInt(&isDigit, 16);
        if (isDigit)
            typeDigit(digit);
    }
}

void QHexEdit::typeDigit(int digit)
{
    if (selectionLength() > 0) {
        if (m_overwrite)
            moveCaret(selectionBegin(), false);
        else
            deleteSelection();
    }
    const qint64 at = m_caret;
    const bool present = at < size();
    const int old = present ? static_cast<quint8>(m_document.read(at, 1).at(0)) : 0;
    if (m_lowDigit && present) {
        edit(at, 1, QByteArray(1, static_cast<char>((old & 0xF0) | digit)), HexDocument::Step::Typing,
             at + 1);
        return;
    }
    const int kept = m_overwrite ? old & 0x0F : 0;
    const int replaced = m_overwrite && present ? 1 : 0;
    m_beforeDigit = m_document.read(at, replaced);
    edit(at, replaced, QByteArray(1, static_cast<char>((digit << 4) | kept)), HexDocument::Step::Typing, at);
    m_lowDigit = true;
}

void QHexEdit::takeDigitBack()
{
    if (!refuseEdit())
        edit(m_caret, 1, *m_beforeDigit, HexDocument::Step::Typing, m_caret);
}

void QHexEdit::putBytes(const QByteArray &bytes, HexDocument::Step step)
{
    if (bytes.isEmpty())
        return;
    const Range range =
        m_overwrite ? Range{selectionBegin(), selectionBegin() + bytes.size()} : editedRange();
    if (selectionLength() > 0)
        step = HexDocument::Step::Alone;
    edit(range.begin, range.end - range.begin, bytes, step, range.begin + bytes.size());
}

void QHexEdit::deleteAt(qint64 address)
{
    if (refuseEdit() || address < 0 || address >= size() || refuseShift())
        return;
    const Range range = m_inText ? withWholeCharacters({address, address + 1}) : Range{address, address + 1};
    edit(range.begin, range.end - range.begin, QByteArray(), HexDocument::Step::Typing, range.begin);
}

void QHexEdit::inputMethodEvent(QInputMethodEvent *event)
{
    if (!event->commitString().isEmpty())
        typeText(event->commitString());
    event->accept();
}

QVariant QHexEdit::inputMethodQuery(Qt::InputMethodQuery query) const
{
    if (query == Qt::ImCursorRectangle) {
        const int row =
            static_cast<int>(qBound<qint64>(0, m_caret / HexLayout::bytesPerRow - topRow(), visibleRows()));
        const int column = static_cast<int>(m_caret % HexLayout::bytesPerRow);
        return (m_inText ? m_layout.text(row, column) : m_layout.hex(row, column))
            .translated(contentOrigin());
    }
    if (query == Qt::ImEnabled)
        return m_inText && !m_readOnly;
    return QAbstractScrollArea::inputMethodQuery(query);
}

void QHexEdit::setInText(bool inText)
{
    m_inText = inText;
    m_lowDigit = false;
    m_document.endTyping();
    setAttribute(Qt::WA_InputMethodEnabled, inText); // digits must not open a list of candidates
    showState();
}

// ---- mouse and context menu

void QHexEdit::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu menu(this);
    m_commands->fill(&menu);
    // In what is no text, chance makes characters.
    QAction *ascii = menu.addAction(QStringLiteral("文本列仅显示ASCII"));
    ascii->setCheckable(true);
    ascii->setChecked(m_asciiOnly);
    connect(ascii, &QAction::toggled, this, &QHexEdit::setAsciiOnly);
    menu.exec(event->globalPos());
}

HexLayout::Place QHexEdit::placeAt(const QPoint &point) const
{
    HexLayout::Place place = m_layout.placeAt(point - contentOrigin());
    place.row += topRow();
    return place;
}

qint64 QHexEdit::addressOf(const HexLayout::Place &place) const
{
    return qBound<qint64>(0, place.row * HexLayout::bytesPerRow + place.column, size());
}

void QHexEdit::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || event->pos().y() < contentOrigin().y())
        return;
    const HexLayout::Place place = placeAt(event->pos());
    setInText(place.inText);
    const qint64 address = addressOf(place);
    if (event->modifiers() & Qt::ShiftModifier) {
        m_dragFrom = m_caret < m_anchor ? m_anchor - 1 : m_anchor; // the byte
        dragTo(event->pos());
        return;
    }
    m_dragFrom = address;
    moveCaret(address, false);
    m_lowDigit = place.lowDigit && address < size();
    m_beforeDigit.reset();
}

void QHexEdit::mouseMoveEvent(QMouseEvent *event)
{
    if (m_dragFrom < 0 || !(event->buttons() & Qt::LeftButton))
        return;
    m_dragPoint = event->pos();
    const bool outside = m_dragPoint.y() < contentOrigin().y() || m_dragPoint.y() >= viewport()->height();
    if (outside && !m_dragScroll.isActive())
        m_dragScroll.start(kDragScrollMs, this);
    else if (!outside)
        m_dragScroll.stop();
    // A hand that trembles selects nothing.
    if (selectionLength() > 0 || addressOf(placeAt(m_dragPoint)) != m_dragFrom)
        dragTo(m_dragPoint);
}

// Both ends are part of the selection, whichever way it is dragged.
void QHexEdit::dragTo(const QPoint &point)
{
    const qint64 to = addressOf(placeAt(point));
    const bool back = to < m_dragFrom;
    m_anchor = qMin(size(), back ? m_dragFrom + 1 : m_dragFrom);
    moveCaret(back ? to : to + 1, true);
}

void QHexEdit::mouseReleaseEvent(QMouseEvent *)
{
    m_dragFrom = -1;
    m_dragScroll.stop();
}

// Selects the byte.
void QHexEdit::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && event->pos().y() >= contentOrigin().y())
        select(addressOf(placeAt(event->pos())), 1);
}

void QHexEdit::wheelEvent(QWheelEvent *event)
{
    if (event->modifiers() & Qt::ControlModifier) {
        if (event->angleDelta().y() != 0)
            zoom(event->angleDelta().y() > 0 ? 1 : -1);
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}
