#include "peerwatch.h"

#include "link.h"

void PeerWatch::watch(Link *link)
{
    connect(link, &Link::peerJoined, this, [this, link](const Peer &peer) {
        m_statistics.joined(peer, link->peerName(peer), Link::nowUs());
    });
    connect(link, &Link::peerLeft, this,
            [this](const Peer &peer) { m_statistics.left(peer, Link::nowUs()); });
    connect(link, &Link::received, this, [this](const QByteArray &bytes, qint64 arrivalUs, const Peer &from) {
        m_statistics.received(from, bytes, arrivalUs);
    });
    connect(link, &Link::handedOver, this,
            [this](qint64 bytes, const Peer &to) { m_statistics.sent(to, bytes, Link::nowUs()); });
    connect(link, &Link::stateChanged, this, [this](Link::State state) {
        if (state == Link::State::Closed)
            m_statistics.allLeft(Link::nowUs());
    });
}
