#include "link.h"

#include <QDateTime>
#include <QElapsedTimer>

namespace {

// Every link of the program.
QVector<const Link *> &allLinks()
{
    static QVector<const Link *> links;
    return links;
}

} // namespace

Link::Link(QObject *parent)
    : QObject(parent)
{
    qRegisterMetaType<Peer>();
    allLinks().append(this);
}

Link::~Link()
{
    allLinks().removeOne(this);
}

QString Link::toolUsing(const QString &resource)
{
    for (const Link *link : qAsConst(allLinks())) {
        if (link->m_state != State::Closed && link->m_resource == resource)
            return link->m_tool;
    }
    return {};
}

qint64 Link::send(const QByteArray &bytes, quint64 peer)
{
    const qint64 timeUs = nowUs(); // an answer may come from within
    const qint64 accepted = accept(bytes, peer);
    if (accepted > 0)
        emit sent(bytes, timeUs, peer);
    return accepted;
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

void Link::readPending()
{
    if (m_reading)
        return;
    setReading(true);
    setReading(false);
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
    if (state != State::Open)
        m_refusal.clear();
    if (state == m_state)
        return;
    m_state = state;
    emit stateChanged(state);
}
