#include "qhexedit.h"

#include "discard.h"
#include "fonts.h"
#include "hexdrag.h"
#include "hexeditcommands.h"
#include "hexkeys.h"
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
#include <utility>

namespace {
constexpr int kMaxZoom = 16;
constexpr int kMinZoom = -4;
constexpr qint64 kLargeDocument = 16 << 20;
} // namespace

QHexEdit::QHexEdit(QWidget *parent)
    : QAbstractScrollArea(parent)
    , m_clipboard(&m_content, &m_task)
    , m_view(this, m_content)
{
    setObjectName(QStringLiteral("hexEdit"));
    setAccessibleName(QStringLiteral("文件内容"));
    setFocusPolicy(Qt::StrongFocus);
    setFont(Fonts::monospace());
    viewport()->setCursor(Qt::IBeamCursor);
    setAttribute(Qt::WA_InputMethodEnabled, false); // until the caret is in the text column
    m_drag = new HexDrag(this);
    m_commands = new HexEditCommands(this);
    connect(&m_task, &SlicedTask::started, this, &QHexEdit::stateChanged);
    connect(&m_task, &SlicedTask::ended, this, &QHexEdit::stateChanged);
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
    m_content.setAddresses(HexAddressMap());
    if (size() > kLargeDocument)
        discardBeside(std::move(this->document()));
    m_content.setDocument(std::move(document), address);
    m_hasToldGrowth = false;
    m_view.resetRows();
    m_drag->end();
    updateLayout();
    verticalScrollBar()->setValue(0);
    showEdit();
    emit documentReplaced();
}

void QHexEdit::setAddresses(HexAddressMap addresses)
{
    m_content.setAddresses(std::move(addresses));
    if (m_content.addresses().isFixed())
        m_content.setOverwrite(true);
    m_view.resetRows();
    m_view.scrollTo(address());
    showState();
    emit addressesChanged();
}

// Only the scroll bar changes where the rows on display are complete.
void QHexEdit::appendData(const QByteArray &block)
{
    const qint64 before = size();
    const int width = m_view.layout().width();
    document().appendContent(block);
    m_view.update();
    if (m_view.endsAt(before) || width != m_view.layout().width())
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

QString QHexEdit::insertRefusal() const
{
    if (addresses().isFixed())
        return QStringLiteral("各段数据的地址固定，只能改写，不能插入或删除字节");
    return isOverwrite() ? QStringLiteral("改写模式下不能插入字节，按Insert键切换到插入模式") : QString();
}

bool QHexEdit::refuseEdit() const
{
    const QString reason = editRefusal();
    if (!reason.isEmpty())
        QtMessageTip::showTip(reason);
    return !reason.isEmpty();
}

// The bytes of an image must keep their addresses.
bool QHexEdit::refuseShift() const
{
    if (addresses().isFixed())
        QtMessageTip::showTip(insertRefusal(), 3000);
    else if (isOverwrite())
        QtMessageTip::showTip(QStringLiteral("改写模式下不能删除字节，按Insert键切换到插入模式"), 3000);
    return isOverwrite();
}

bool QHexEdit::refuseBeyondRun(qint64 count) const
{
    const bool leaves = m_content.leavesRun(count);
    if (leaves)
        QtMessageTip::showTip(QStringLiteral("未改写：内容超出本段数据的末尾，各段数据的地址和长度固定"),
                              3000);
    return leaves;
}

void QHexEdit::goTo(qint64 address, bool keepAnchor)
{
    m_content.moveCaret(address, keepAnchor);
    m_view.scrollTo(m_content.caret());
    showState();
}

void QHexEdit::select(qint64 address, qint64 length)
{
    goTo(address);
    goTo(address + length, true);
}

void QHexEdit::selectTo(qint64 anchor, qint64 caret)
{
    m_content.select(anchor, caret);
    m_view.scrollTo(address());
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

void QHexEdit::overwrite(qint64 address, const QByteArray &bytes)
{
    const qint64 anchor = m_content.anchor();
    const qint64 caret = m_content.caret();
    document().replace(address, bytes.size(), bytes);
    m_content.select(anchor, caret);
    showEdit();
}

void QHexEdit::contentEdited(qint64 address)
{
    m_content.endEdit(address);
    showEdit();
}

void QHexEdit::setReadOnly(bool readOnly, const QString &reason)
{
    m_readOnly = readOnly;
    m_readOnlyReason = reason.isEmpty() ? QStringLiteral("内容只读") : reason;
    showState();
}

void QHexEdit::setOverwrite(bool overwrite)
{
    if (!overwrite && addresses().isFixed()) {
        refuseShift();
        return;
    }
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

void QHexEdit::setBytesPerRow(int bytes)
{
    m_view.setBytesPerRow(bytes);
    viewport()->update();
}

void QHexEdit::setMarks(std::vector<HexMark> marks)
{
    m_marks = std::move(marks);
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

void QHexEdit::copyAs(HexCopyText::Form form)
{
    m_clipboard.copyAs(form);
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
        if (refuseBeyondRun(bytes.size()))
            return;
        const qint64 before = size();
        m_content.putBytes(bytes, HexDocument::Step::Alone);
        showEdit();
        tellGrowth(before);
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
    if (!m_commands->runKey(event) && !HexKeys(this).press(event))
        QAbstractScrollArea::keyPressEvent(event);
}

void QHexEdit::erase(bool forwards)
{
    if (m_content.hasSelection()) {
        deleteSelection();
        return;
    }
    if (refuseEdit())
        return;
    const qint64 at = forwards ? address() : address() - 1;
    if (!forwards && m_content.canEraseDigit())
        m_content.eraseDigit();
    else if (at < 0 || at >= size() || refuseShift())
        return;
    else
        m_content.deleteAt(at);
    showEdit();
}

void QHexEdit::typeText(const QString &text)
{
    const qint64 before = size();
    if (refuseEdit() || refuseBeyondRun(m_content.typedLength(text)) || !m_content.typeText(text))
        return;
    showEdit();
    tellGrowth(before);
}

// Who overwrites bytes may not expect it; once is enough.
void QHexEdit::tellGrowth(qint64 before)
{
    if (m_hasToldGrowth || !isOverwrite() || size() <= before)
        return;
    m_hasToldGrowth = true;
    QtMessageTip::showTip(QStringLiteral("已超出文件末尾，新字节追加在末尾，文件变长"), 3000);
}

// Tab leads through the two columns before it leads to the next widget.
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
}

QVariant QHexEdit::inputMethodQuery(Qt::InputMethodQuery query) const
{
    if (query == Qt::ImCursorRectangle)
        return m_view.caretRect();
    if (query == Qt::ImEnabled)
        return m_content.isInText() && !m_readOnly;
    return QAbstractScrollArea::inputMethodQuery(query);
}

// ---- mouse and context menu

void QHexEdit::placeCaret(const QPoint &point)
{
    const HexLayout::Place place = m_view.placeAt(point);
    setInText(place.inText);
    goTo(m_view.addressAt(point));
    if (place.lowDigit)
        m_content.moveToLowDigit();
}

void QHexEdit::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && event->pos().y() >= m_view.rowsRect().top())
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
    if (event->button() == Qt::LeftButton && event->pos().y() >= m_view.rowsRect().top())
        select(m_view.addressAt(event->pos()), 1);
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
    if (!actions().isEmpty())
        menu.addSeparator();
    menu.addActions(actions());
    menu.exec(event->globalPos());
}

// ---- what is shown

void QHexEdit::showEdit()
{
    updateLayout();
    m_view.scrollTo(address());
    showState();
    emit contentChanged();
}

void QHexEdit::updateLayout()
{
    m_view.update();
    viewport()->update();
}

void QHexEdit::showState()
{
    m_caretOn = true;
    viewport()->update();
    showSize();
    if (shownAddress(address()) != m_shownAddress) {
        m_shownAddress = shownAddress(address());
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
    HexPainter(&painter, m_content, m_view.lines(), m_view.layout(),
               {viewport()->width(), m_view.origin(), m_view.topRow(), m_view.rows(), hasFocus() && m_caretOn,
                &m_marks})
        .paint();
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
