#pragma once

// Keeps the statistics of links' peers. Owns nothing of the links.

#include "peerstatistics.h"

#include <QObject>

class Link;

class PeerWatch : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // Before the link is opened.
    void watch(Link *link);

    PeerStatistics &statistics() { return m_statistics; }

private:
    PeerStatistics m_statistics;
};
