#include "link.h"

#include <QDateTime>
#include <QElapsedTimer>

Link::Link(QObject *parent)
    : QObject(parent)
{
    qRegisterMetaType<Peer>();
}

void Link::closePeer(quint64)
{
    close();
}

void Link::setReading(bool reading)
{
    if (reading == m_reading)
        return;
    m_reading = reading;
    readingChanged();
}

qint64 Link::nowUs()
{
    static const qint64 startUs = QDateTime::currentMSecsSinceEpoch() * 1000;
    static const QElapsedTimer sinceStart = [] {
        QElapsedTimer timer;
        timer.start();
        return timer;
    }();
    return startUs + sinceStart.nsecsElapsed() / 1000;
}

void Link::setState(State state, const QString &reason)
{
    m_reason = reason;
    if (state == m_state)
        return;
    m_state = state;
    emit stateChanged(state);
}
