#include "hexkeys.h"

#include "qhexedit.h"

#include <QKeyEvent>

HexKeys::HexKeys(QHexEdit *edit)
    : m_edit(edit)
{
}

bool HexKeys::press(const QKeyEvent *event)
{
    return zoom(event) || move(event) || edit(event);
}

bool HexKeys::zoom(const QKeyEvent *event)
{
    const bool control = event->modifiers() == Qt::ControlModifier;
    if (event->matches(QKeySequence::ZoomIn) || (event->key() == Qt::Key_Equal && control))
        m_edit->zoom(1);
    else if (event->matches(QKeySequence::ZoomOut))
        m_edit->zoom(-1);
    else if (event->key() == Qt::Key_0 && control)
        m_edit->zoom(0);
    else
        return false;
    return true;
}

bool HexKeys::move(const QKeyEvent *event)
{
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    const bool control = event->modifiers() & Qt::ControlModifier;
    const HexRows &rows = m_edit->view().lines();
    const qint64 caret = m_edit->address();
    const HexRows::Place place = rows.placeOf(caret);
    // Behind the last byte of a selected row one is still in that row.
    const bool isBehind = shift && caret > m_edit->content().anchor();
    const HexRows::Row row = rows.row(isBehind ? rows.placeOf(caret - 1).row : place.row);
    const int page = m_edit->view().rows();
    qint64 to = caret;
    switch (event->key()) {
    case Qt::Key_Left:
        --to;
        break;
    case Qt::Key_Right:
        ++to;
        break;
    case Qt::Key_Up:
        to = place.row > 0 ? rows.offsetAt(place.row - 1, place.column) : caret;
        break;
    case Qt::Key_Down:
        to = rows.offsetBelow(place, 1).value_or(caret);
        break;
    case Qt::Key_PageUp:
        m_edit->view().scrollByPages(-1);
        to = rows.offsetAt(qMax<qint64>(place.row - page, 0), place.column);
        break;
    case Qt::Key_PageDown:
        m_edit->view().scrollByPages(1);
        to = rows.offsetBelow(place, page).value_or(m_edit->size());
        break;
    case Qt::Key_Home:
        to = control ? 0 : row.begin;
        break;
    case Qt::Key_End:
        to = control ? m_edit->size() : rows.endOf(row, shift);
        break;
    default:
        return false;
    }
    m_edit->goTo(to, shift);
    return true;
}

bool HexKeys::edit(const QKeyEvent *event)
{
    if (event->key() == Qt::Key_Insert && event->modifiers() == Qt::NoModifier) {
        m_edit->setOverwrite(!m_edit->isOverwrite());
        return true;
    }
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        m_edit->erase(event->key() == Qt::Key_Delete);
        return true;
    }
    const QString text = event->text();
    if (text.isEmpty() || !text.at(0).isPrint() ||
        (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)))
        return false;
    m_edit->typeText(text);
    return true;
}
