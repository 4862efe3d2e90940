#pragma once

// Selecting with the mouse: both ends belong to the selection, whichever way it
// is dragged, and rows scroll by while the mouse is above or below them. Owns
// the timer of that; acts on the editor, whose mouse events it is given.

#include <QBasicTimer>
#include <QObject>
#include <QPoint>

class QHexEdit;
class QMouseEvent;

class HexDrag : public QObject
{
    Q_OBJECT

public:
    explicit HexDrag(QHexEdit *edit);

    void press(const QMouseEvent *event);
    void move(const QMouseEvent *event);
    void end();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void dragTo(const QPoint &point);

    QHexEdit *m_edit;
    qint64 m_from = -1; // the first byte; none where nothing is dragged
    QPoint m_point;
    QBasicTimer m_scroll;
};
