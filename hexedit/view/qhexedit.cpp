#include "qhexedit.h"

#include "fonts.h"
#include "hexeditcommands.h"
#include "qtmessagetip.h"

#include <QEvent>
#include <QGuiApplication>
#include <QIODevice>
#include <QScrollBar>
#include <QStyleHints>
#include <QTimerEvent>
#include <limits>
#include <utility>

namespace {
constexpr int kMostZoom = 16;
constexpr int kLeastZoom = -4;
} // namespace

QHexEdit::QHexEdit(QWidget *parent)
    : QAbstractScrollArea(parent)
{
    setObjectName(QStringLiteral("hexEdit"));
    setAccessibleName(QStringLiteral("文件内容"));
    setFocusPolicy(Qt::StrongFocus);
    setFont(Fonts::monospace());
    viewport()->setCursor(Qt::IBeamCursor);
    setAttribute(Qt::WA_InputMethodEnabled, false); // until the caret is in the text column
    verticalScrollBar()->setSingleStep(1);
    m_commands = new HexEditCommands(this);
    connect(&m_task, &SlicedTask::started, this, &QHexEdit::stateChanged);
    connect(&m_task, &SlicedTask::ended, this, &QHexEdit::stateChanged);
    updateLayout();
}

void QHexEdit::setData(const QByteArray &bytes)
{
    HexDocument document;
    document.appendContent(bytes);
    setDocument(std::move(document));
}

void QHexEdit::setDocument(HexDocument document, qint64 address)
{
    m_document = std::move(document);
    m_caret = m_anchor = qBound<qint64>(0, address, size());
    m_lowDigit = false;
    m_dragFrom = -1;
    updateLayout();
    verticalScrollBar()->setValue(0);
    ensureVisible();
    showState();
    emit contentChanged();
}

// Only the scroll bar changes where the rows on display are complete.
void QHexEdit::appendData(const QByteArray &block)
{
    const qint64 before = size();
    const int width = m_layout.width();
    m_document.appendContent(block);
    m_layout.update(fontMetrics(), size());
    updateScrollBars();
    if (before <= (topRow() + visibleRows() + 1) * HexLayout::bytesPerRow || width != m_layout.width())
        showState();
    else
        showSize();
}

bool QHexEdit::write(QIODevice &device, qint64 position, qint64 count) const
{
    return m_document.write(device, position, count);
}

void QHexEdit::setSaved()
{
    m_document.setSaved();
    showState();
}

void QHexEdit::setUnsaved()
{
    m_document.setUnsaved();
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

void QHexEdit::goTo(qint64 address)
{
    moveCaret(address, false);
}

void QHexEdit::select(qint64 address, qint64 length)
{
    moveCaret(address, false);
    moveCaret(address + length, true);
}

void QHexEdit::replaceSelection(const QByteArray &bytes)
{
    const qint64 begin = selectionBegin();
    edit(begin, selectionLength(), bytes, HexDocument::Step::Alone, begin + bytes.size());
}

void QHexEdit::setReadOnly(bool readOnly, const QString &reason)
{
    m_readOnly = readOnly;
    m_readOnlyReason = reason.isEmpty() ? QStringLiteral("内容只读") : reason;
    showState();
}

void QHexEdit::setOverwrite(bool overwrite)
{
    m_overwrite = overwrite;
    m_document.endTyping();
    showState();
}

void QHexEdit::setTextCodec(int index)
{
    m_codec = index;
    viewport()->update();
}

void QHexEdit::setAsciiOnly(bool asciiOnly)
{
    m_asciiOnly = asciiOnly;
    viewport()->update();
}

void QHexEdit::setPlaceholderText(const QString &text)
{
    m_placeholder = text;
    viewport()->update();
}

void QHexEdit::zoom(int steps)
{
    const int zoom = steps == 0 ? 0 : qBound(kLeastZoom, m_zoom + steps, kMostZoom);
    if (zoom == m_zoom)
        return;
    m_zoom = zoom;
    QFont font = Fonts::monospace();
    font.setPointSizeF(font.pointSizeF() + m_zoom);
    setFont(font); // leads to changeEvent()
}

void QHexEdit::undo()
{
    if (!m_document.canUndo() || refuseEdit())
        return;
    contentEdited(m_document.undo());
}

void QHexEdit::redo()
{
    if (!m_document.canRedo() || refuseEdit())
        return;
    contentEdited(m_document.redo());
}

void QHexEdit::contentEdited(qint64 address)
{
    m_lowDigit = false;
    m_caret = m_anchor = qBound<qint64>(0, address, size());
    updateLayout();
    ensureVisible();
    showState();
    emit contentChanged();
}

void QHexEdit::edit(qint64 address, qint64 length, const QByteArray &bytes, HexDocument::Step step,
                    qint64 caret)
{
    m_document.replace(address, length, bytes, step);
    contentEdited(caret);
}

void QHexEdit::moveCaret(qint64 address, bool keepAnchor)
{
    m_document.endTyping();
    m_lowDigit = false;
    m_caret = qBound<qint64>(0, address, size());
    if (!keepAnchor)
        m_anchor = m_caret;
    ensureVisible();
    showState();
}

void QHexEdit::showState()
{
    m_caretOn = true;
    viewport()->update();
    showSize();
    if (m_caret != m_shownAddress) {
        m_shownAddress = m_caret;
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
    const qint64 row = m_caret / HexLayout::bytesPerRow;
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
    if (event->timerId() == m_blink.timerId()) {
        m_caretOn = !m_caretOn;
        viewport()->update();
    } else if (event->timerId() == m_dragScroll.timerId()) {
        dragTo(m_dragPoint);
    } else {
        QAbstractScrollArea::timerEvent(event);
    }
}
