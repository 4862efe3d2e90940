#include "hexdrag.h"

#include "qhexedit.h"

#include <QMouseEvent>

namespace {
constexpr int kScrollMs = 30;
}

HexDrag::HexDrag(QHexEdit *edit)
    : QObject(edit)
    , m_edit(edit)
{
}

void HexDrag::press(const QMouseEvent *event)
{
    if (event->modifiers() & Qt::ShiftModifier) {
        const qint64 anchor = m_edit->content().anchor();
        m_from = m_edit->content().caret() < anchor ? anchor - 1 : anchor; // the byte
        m_edit->setInText(m_edit->view().placeAt(event->pos()).inText);
        dragTo(event->pos());
        return;
    }
    m_from = m_edit->view().addressAt(event->pos());
    m_edit->placeCaret(event->pos());
}

void HexDrag::move(const QMouseEvent *event)
{
    if (m_from < 0 || !(event->buttons() & Qt::LeftButton))
        return;
    m_point = event->pos();
    const QRect rows = m_edit->view().rowsRect();
    const bool isOutside = m_point.y() < rows.top() || m_point.y() > rows.bottom();
    if (isOutside && !m_scroll.isActive())
        m_scroll.start(kScrollMs, this);
    else if (!isOutside)
        m_scroll.stop();
    // A tremor within one byte selects nothing.
    if (m_edit->selectionLength() > 0 || m_edit->view().addressAt(m_point) != m_from)
        dragTo(m_point);
}

void HexDrag::dragTo(const QPoint &point)
{
    const qint64 to = m_edit->view().addressAt(point);
    if (to < m_from)
        m_edit->selectTo(m_from + 1, to);
    else
        m_edit->selectTo(m_from, to + 1);
}

void HexDrag::end()
{
    m_from = -1;
    m_scroll.stop();
}

void HexDrag::timerEvent(QTimerEvent *)
{
    dragTo(m_point);
}
