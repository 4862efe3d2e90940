#include "qttexteditinput.h"

#include "placeholdertext.h"
#include "sendtext.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>

namespace {

bool isHexKey(int key)
{
    switch (key) {
    case Qt::Key_Space:
    case Qt::Key_Backspace:
    case Qt::Key_Return:
    case Qt::Key_Left:
    case Qt::Key_Right:
        return true;
    default:
        return (key >= Qt::Key_0 && key <= Qt::Key_9) || (key >= Qt::Key_A && key <= Qt::Key_F);
    }
}

// Keys that enter nothing when pressed alone.
bool isModifierKey(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
        return true;
    default:
        return false;
    }
}

} // namespace

QtTextEditInput::QtTextEditInput(QWidget *parent)
    : QTextEdit(parent)
{
    setObjectName(QStringLiteral("textEditSend"));
    setAccessibleName(QStringLiteral("发送编辑区"));
    setTabChangesFocus(true);
    // Looking for word ends costs the square of a line's length: a minute for a
    // pasted line of a million characters.
    setWordWrapMode(QTextOption::WrapAnywhere);
    setPlaceholderText(QStringLiteral("请输入需要发送的数据"));
    PlaceholderText::keepFaint(this);
}

// A line as it is shown, which may be part of a paragraph.
bool QtTextEditInput::isHistoryKey(const QKeyEvent *event)
{
    const bool isUp = event->key() == Qt::Key_Up;
    if ((!isUp && event->key() != Qt::Key_Down) ||
        (event->modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier)
        return false;
    QTextCursor beyond = textCursor();
    if (beyond.hasSelection() || beyond.movePosition(isUp ? QTextCursor::Up : QTextCursor::Down))
        return false;
    bool hasOne = false;
    if (isUp)
        emit olderWanted(&hasOne);
    else
        emit newerWanted(&hasOne);
    return hasOne;
}

void QtTextEditInput::keyPressEvent(QKeyEvent *event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (m_enterSends && isEnter && (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier) {
        if (!event->isAutoRepeat())
            emit sendWanted();
        return;
    }
    if (isHistoryKey(event))
        return;
    if (!m_hexMode || isHexKey(event->key())) {
        QTextEdit::keyPressEvent(event);
        return;
    }
    if (isModifierKey(event->key())) {
        event->ignore();
        return;
    }
    event->accept();
    emit showErrorHint();
}

void QtTextEditInput::inputMethodEvent(QInputMethodEvent *event)
{
    QTextEdit::inputMethodEvent(event);
}

void QtTextEditInput::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu *menu = createStandardContextMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
}

bool QtTextEditInput::canInsertFromMimeData(const QMimeData *source) const
{
    return source->hasText();
}

void QtTextEditInput::insertFromMimeData(const QMimeData *source)
{
    QString text = source->text();
    if (text.size() > SendText::maxCharacters) {
        emit pasteRefused();
        return;
    }
    if (m_hexMode) {
        int dropped = 0;
        text = SendText::hexOf(text, &dropped);
        if (dropped > 0)
            emit showErrorHint();
    }
    textCursor().insertText(text);
    ensureCursorVisible();
}
