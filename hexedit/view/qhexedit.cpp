#include "qhexedit.h"

#include "fonts.h"
#include "hexdrag.h"
#include "hexeditcommands.h"
#include "hexpainter.h"
#include "qtmessagetip.h"
#include "skin.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QStyleHints>
#include <QTimerEvent>
#include <limits>
#include <utility>

namespace {
constexpr int kMaxZoom = 16;
constexpr int kMinZoom = -4;
} // namespace

QHexEdit::QHexEdit(QWidget *parent)
    : QAbstractScrollArea(parent)
    , m_clipboard(&m_content, &m_task)
{
    setObjectName(QStringLiteral("hexEdit"));
    setAccessibleName(QStringLiteral("文件内容"));
    setFocusPolicy(Qt::StrongFocus);
    setFont(Fonts::monospace());
    viewport()->setCursor(Qt::IBeamCursor);
    setAttribute(Qt::WA_InputMethodEnabled, false); // until the caret is in the text column
    verticalScrollBar()->setSingleStep(1);
    m_drag = new HexDrag(this);
    m_commands = new HexEditCommands(this);
    connect(&m_task, &SlicedTask::started, this, &QHexEdit::stateChanged);
    connect(&m_task, &SlicedTask::ended, this, &QHexEdit::stateChanged);
    updateLayout();
}

// ---- content

void QHexEdit::setData(const QByteArray &bytes)
{
    HexDocument document;
    document.appendContent(bytes);
    setDocument(std::move(document));
}

void QHexEdit::setDocument(HexDocument document, qint64 address)
{
    m_content.setDocument(std::move(document), address);
    m_drag->end();
    updateLayout();
    verticalScrollBar()->setValue(0);
    showEdit();
}

// Only the scroll bar changes where the rows on display are complete.
void QHexEdit::appendData(const QByteArray &block)
{
    const qint64 before = size();
    const int width = m_layout.width();
    document().appendContent(block);
    m_layout.update(fontMetrics(), size());
    updateScrollBars();
    if (before <= (topRow() + visibleRows() + 1) * HexLayout::bytesPerRow || width != m_layout.width())
        showState();
    else
        showSize();
}

bool QHexEdit::write(QIODevice &device, qint64 position, qint64 count) const
{
    return document().write(device, position, count);
}

void QHexEdit::setSaved()
{
    document().setSaved();
    showState();
}

void QHexEdit::setUnsaved()
{
    document().setUnsaved();
    showState();
}

QString QHexEdit::busyReason() const
{
    if (!m_task.isRunning())
        return QString();
    return m_task.name() + (m_task.isStoppable() ? QStringLiteral("，请等待完成或单击“停止”")
                                                 : QStringLiteral("，请等待完成"));
}

QString QHexEdit::editRefusal() const
{
    const QString busy = busyReason();
    return busy.isEmpty() && m_readOnly ? m_readOnlyReason : busy;
}

bool QHexEdit::refuseEdit() const
{
    const QString reason = editRefusal();
    if (!reason.isEmpty())
        QtMessageTip::showTip(reason);
    return !reason.isEmpty();
}

// An image whose bytes move is no longer the image.
bool QHexEdit::refuseShift() const
{
    if (isOverwrite())
        QtMessageTip::showTip(QStringLiteral("改写模式下不能删除字节，按Insert键切换到插入模式"), 3000);
    return isOverwrite();
}

void QHexEdit::goTo(qint64 address)
{
    moveCaret(address, false);
}

void QHexEdit::select(qint64 address, qint64 length)
{
    moveCaret(address, false);
    moveCaret(address + length, true);
}

void QHexEdit::selectTo(qint64 anchor, qint64 caret)
{
    m_content.select(anchor, caret);
    ensureVisible();
    showState();
}

void QHexEdit::selectAll()
{
    const int row = verticalScrollBar()->value();
    select(0, size());
    verticalScrollBar()->setValue(row);
}

void QHexEdit::replaceSelection(const QByteArray &bytes)
{
    m_content.replaceSelection(bytes);
    showEdit();
}

void QHexEdit::contentEdited(qint64 address)
{
    m_content.endEdit(address);
    showEdit();
}

void QHexEdit::moveCaret(qint64 address, bool keepAnchor)
{
    m_content.moveCaret(address, keepAnchor);
    ensureVisible();
    showState();
}

void QHexEdit::setReadOnly(bool readOnly, const QString &reason)
{
    m_readOnly = readOnly;
    m_readOnlyReason = reason.isEmpty() ? QStringLiteral("内容只读") : reason;
    showState();
}

void QHexEdit::setOverwrite(bool overwrite)
{
    m_content.setOverwrite(overwrite);
    showState();
}

void QHexEdit::setInText(bool inText)
{
    m_content.setInText(inText);
    setAttribute(Qt::WA_InputMethodEnabled, inText); // digits must not open a list of candidates
    showState();
}

void QHexEdit::setTextCodec(int index)
{
    m_content.setCodec(index);
    viewport()->update();
}

void QHexEdit::setAsciiOnly(bool asciiOnly)
{
    m_content.setAsciiOnly(asciiOnly);
    viewport()->update();
}

void QHexEdit::setPlaceholderText(const QString &text)
{
    m_placeholder = text;
    viewport()->update();
}

void QHexEdit::zoom(int steps)
{
    const int zoom = steps == 0 ? 0 : qBound(kMinZoom, m_zoom + steps, kMaxZoom);
    if (zoom == m_zoom)
        return;
    m_zoom = zoom;
    QFont font = Fonts::monospace();
    font.setPointSizeF(font.pointSizeF() + m_zoom);
    setFont(font); // leads to changeEvent()
}

// ---- commands

void QHexEdit::undo()
{
    if (document().canUndo() && !refuseEdit())
        contentEdited(document().undo());
}

void QHexEdit::redo()
{
    if (document().canRedo() && !refuseEdit())
        contentEdited(document().redo());
}

void QHexEdit::copy()
{
    m_clipboard.copy(m_content.isInText() ? HexClip::As::Text : HexClip::As::Hex);
}

void QHexEdit::copyHex()
{
    m_clipboard.copy(HexClip::As::Hex);
}

void QHexEdit::copyText()
{
    m_clipboard.copy(HexClip::As::Text);
}

void QHexEdit::cut()
{
    if (m_content.hasSelection() && !refuseEdit() && !refuseShift() &&
        m_clipboard.copy(m_content.isInText() ? HexClip::As::Text : HexClip::As::Hex))
        deleteSelection();
}

void QHexEdit::paste()
{
    if (refuseEdit())
        return;
    m_clipboard.paste([this](qint64 anchor, qint64 caret, const QByteArray &bytes) {
        m_content.select(anchor, caret); // the caret may have been moved meanwhile
        m_content.putBytes(bytes, HexDocument::Step::Alone);
        showEdit();
    });
}

void QHexEdit::deleteSelection()
{
    if (!m_content.hasSelection() || refuseEdit() || refuseShift())
        return;
    m_content.deleteSelection();
    showEdit();
}

// ---- keyboard and input method

void QHexEdit::keyPressEvent(QKeyEvent *event)
{
    if (!m_commands->runKey(event) && !zoomByKey(event) && !moveByKey(event) && !editByKey(event))
        QAbstractScrollArea::keyPressEvent(event);
}

bool QHexEdit::zoomByKey(const QKeyEvent *event)
{
    const bool control = event->modifiers() == Qt::ControlModifier;
    if (event->matches(QKeySequence::ZoomIn) || (event->key() == Qt::Key_Equal && control))
        zoom(1);
    else if (event->matches(QKeySequence::ZoomOut))
        zoom(-1);
    else if (event->key() == Qt::Key_0 && control)
        zoom(0);
    else
        return false;
    return true;
}

bool QHexEdit::moveByKey(const QKeyEvent *event)
{
    constexpr int row = HexLayout::bytesPerRow;
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    const bool control = event->modifiers() & Qt::ControlModifier;
    const qint64 caret = m_content.caret();
    // Behind the last byte of a selected row one is still in that row.
    const qint64 rowStart = (shift && caret > m_content.anchor() ? caret - 1 : caret) / row * row;
    const qint64 page = qint64(visibleRows()) * row;
    qint64 to = caret;
    switch (event->key()) {
    case Qt::Key_Left:
        to = caret - 1;
        break;
    case Qt::Key_Right:
        to = caret + 1;
        break;
    case Qt::Key_Up:
        to = caret >= row ? caret - row : caret;
        break;
    case Qt::Key_Down:
        to = caret + row <= size() ? caret + row : caret;
        break;
    case Qt::Key_PageUp:
        scrollByPage(true);
        to = caret >= page ? caret - page : caret % row;
        break;
    case Qt::Key_PageDown:
        scrollByPage(false);
        to = caret + page <= size() ? caret + page : size();
        break;
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

void QHexEdit::scrollByPage(bool up)
{
    verticalScrollBar()->setValue(verticalScrollBar()->value() + (up ? -visibleRows() : visibleRows()));
}

bool QHexEdit::editByKey(const QKeyEvent *event)
{
    if (event->key() == Qt::Key_Insert && event->modifiers() == Qt::NoModifier) {
        setOverwrite(!isOverwrite());
        return true;
    }
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        eraseByKey(event->key());
        return true;
    }
    const QString text = event->text();
    if (text.isEmpty() || !text.at(0).isPrint() ||
        (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)))
        return false;
    typeText(text);
    return true;
}

void QHexEdit::eraseByKey(int key)
{
    if (m_content.hasSelection()) {
        deleteSelection();
        return;
    }
    if (refuseEdit())
        return;
    const qint64 address = key == Qt::Key_Delete ? m_content.caret() : m_content.caret() - 1;
    if (key == Qt::Key_Backspace && m_content.canTakeDigitBack())
        m_content.takeDigitBack();
    else if (address < 0 || address >= size() || refuseShift())
        return;
    else
        m_content.deleteAt(address);
    showEdit();
}

void QHexEdit::typeText(const QString &text)
{
    if (!refuseEdit() && m_content.typeText(text))
        showEdit();
}

// The two columns come first, then the next widget.
bool QHexEdit::focusNextPrevChild(bool next)
{
    if (next == m_content.isInText())
        return QAbstractScrollArea::focusNextPrevChild(next);
    setInText(next);
    return true;
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
        const int row = static_cast<int>(
            qBound<qint64>(0, m_content.caret() / HexLayout::bytesPerRow - topRow(), visibleRows()));
        const int column = static_cast<int>(m_content.caret() % HexLayout::bytesPerRow);
        return (m_content.isInText() ? m_layout.text(row, column) : m_layout.hex(row, column))
            .translated(contentOrigin());
    }
    if (query == Qt::ImEnabled)
        return m_content.isInText() && !m_readOnly;
    return QAbstractScrollArea::inputMethodQuery(query);
}

// ---- mouse and context menu

QRect QHexEdit::rowsRect() const
{
    return viewport()->rect().adjusted(0, m_layout.rowHeight(), 0, 0);
}

HexLayout::Place QHexEdit::placeAt(const QPoint &point) const
{
    HexLayout::Place place = m_layout.placeAt(point - contentOrigin());
    place.row += topRow();
    return place;
}

qint64 QHexEdit::addressAt(const QPoint &point) const
{
    const HexLayout::Place place = placeAt(point);
    return qBound<qint64>(0, place.row * HexLayout::bytesPerRow + place.column, size());
}

void QHexEdit::placeCaret(const QPoint &point)
{
    const HexLayout::Place place = placeAt(point);
    setInText(place.inText);
    moveCaret(addressAt(point), false);
    if (place.lowDigit)
        m_content.moveToLowDigit();
}

void QHexEdit::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && event->pos().y() >= rowsRect().top())
        m_drag->press(event);
}

void QHexEdit::mouseMoveEvent(QMouseEvent *event)
{
    m_drag->move(event);
}

void QHexEdit::mouseReleaseEvent(QMouseEvent *)
{
    m_drag->end();
}

// Selects the byte.
void QHexEdit::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && event->pos().y() >= rowsRect().top())
        select(addressAt(event->pos()), 1);
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

void QHexEdit::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu menu(this);
    m_commands->fill(&menu);
    // In bytes that are no text, characters come about by chance.
    QAction *ascii = menu.addAction(QStringLiteral("文本列仅显示ASCII"));
    ascii->setCheckable(true);
    ascii->setChecked(m_content.isAsciiOnly());
    connect(ascii, &QAction::toggled, this, &QHexEdit::setAsciiOnly);
    menu.exec(event->globalPos());
}

// ---- what is shown

void QHexEdit::showEdit()
{
    updateLayout();
    ensureVisible();
    showState();
    emit contentChanged();
}

void QHexEdit::showState()
{
    m_caretOn = true;
    viewport()->update();
    showSize();
    if (m_content.caret() != m_shownAddress) {
        m_shownAddress = m_content.caret();
        emit currentAddressChanged(m_shownAddress);
    }
    updateMicroFocus();
    emit stateChanged();
}

void QHexEdit::showSize()
{
    if (size() == m_shownSize)
        return;
    m_shownSize = size();
    emit currentSizeChanged(m_shownSize);
}

void QHexEdit::ensureVisible()
{
    const qint64 row = m_content.caret() / HexLayout::bytesPerRow;
    if (row < topRow())
        verticalScrollBar()->setValue(static_cast<int>(row));
    else if (row >= topRow() + visibleRows())
        verticalScrollBar()->setValue(static_cast<int>(row - visibleRows() + 1));
}

int QHexEdit::visibleRows() const
{
    return qMax(1, viewport()->height() / m_layout.rowHeight() - 1); // one is the header
}

qint64 QHexEdit::topRow() const
{
    return verticalScrollBar()->value();
}

QPoint QHexEdit::contentOrigin() const
{
    return {-horizontalScrollBar()->value(), m_layout.rowHeight()};
}

void QHexEdit::updateLayout()
{
    m_layout.update(fontMetrics(), size());
    updateScrollBars();
    viewport()->update();
}

void QHexEdit::updateScrollBars()
{
    const qint64 rows = size() / HexLayout::bytesPerRow + 1;
    verticalScrollBar()->setPageStep(visibleRows());
    verticalScrollBar()->setRange(
        0, static_cast<int>(qBound<qint64>(0, rows - visibleRows(), std::numeric_limits<int>::max())));
    horizontalScrollBar()->setPageStep(viewport()->width());
    horizontalScrollBar()->setRange(0, qMax(0, m_layout.width() - viewport()->width()));
    horizontalScrollBar()->setSingleStep(m_layout.cellWidth());
}

void QHexEdit::paintEvent(QPaintEvent *)
{
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), QColor(Skin::palette().panel));
    if (size() == 0 && m_readOnly) {
        painter.setPen(QColor(Skin::palette().secondaryText));
        painter.setFont(QApplication::font());
        painter.drawText(viewport()->rect().adjusted(16, 16, -16, -16), Qt::AlignCenter | Qt::TextWordWrap,
                         m_placeholder);
        return;
    }
    const HexPainter::View view{viewport()->width(), contentOrigin(), topRow(), visibleRows(),
                                hasFocus() && m_caretOn};
    HexPainter(&painter, m_content, m_layout, view).paint();
}

void QHexEdit::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    updateLayout();
}

void QHexEdit::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        updateLayout();
}

void QHexEdit::scrollContentsBy(int, int)
{
    viewport()->update();
}

void QHexEdit::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    const int flash = QGuiApplication::styleHints()->cursorFlashTime();
    if (flash > 0)
        m_blink.start(flash / 2, this);
    m_caretOn = true;
    viewport()->update();
}

void QHexEdit::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    m_blink.stop();
    viewport()->update();
}

void QHexEdit::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_blink.timerId()) {
        QAbstractScrollArea::timerEvent(event);
        return;
    }
    m_caretOn = !m_caretOn;
    viewport()->update();
}
