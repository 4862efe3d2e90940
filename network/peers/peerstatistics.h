#pragma once

// What each peer has sent and received: a row for each connection, and for each
// sender of datagrams while the port is open. A row stays when its peer leaves.
// Of very many peers those that were silent for longest give up their rows, and
// are counted together. Times are microseconds since 1970, passed by the caller.

#include "peer.h"

#include <QByteArray>
#include <QHash>
#include <QVector>

#include <list>

class PeerStatistics
{
public:
    static constexpr int maxRows = 1000;
    static constexpr int previewBytes = 64;

    struct Row
    {
        Peer peer;
        QString name;            // as notices name it
        bool isDatagram = false; // no connection
        qint64 sinceUs = 0;
        qint64 leftUs = 0; // 0 while it is there
        qint64 received = 0;
        qint64 sent = 0;
        qint64 lastUs = 0; // when it last sent something; 0: never
        QByteArray last;   // the beginning of that
        int lastSize = 0;
    };
    struct Rest
    {
        qint64 rows = 0;
        qint64 received = 0;
        qint64 sent = 0;
    };

    // A connection is made; a sender of datagrams joins with its first one.
    void joined(const Peer &peer, const QString &name, qint64 nowUs);
    void left(const Peer &peer, qint64 nowUs);
    void allLeft(qint64 nowUs);
    void received(const Peer &peer, const QByteArray &bytes, qint64 nowUs);
    void sent(const Peer &peer, qint64 bytes, qint64 nowUs);

    // Forgets who has left, and counts from 0 again.
    void clear();

    // A row keeps its index until it is cleared, but may become another peer's.
    int size() const { return m_rows.size(); }
    const Row &at(int row) const { return m_rows.at(row).row; }
    // Those without a row.
    const Rest &rest() const { return m_rest; }
    // Of all changes.
    quint64 changes() const { return m_changes; }

private:
    struct Key
    {
        quint64 id;
        QHostAddress address;
        quint16 port;

        friend bool operator==(const Key &a, const Key &b)
        {
            return a.id == b.id && a.port == b.port && a.address == b.address;
        }
        friend uint qHash(const Key &key, uint seed)
        {
            return qHash(key.address, seed) ^ ::qHash(key.id * 65536 + key.port, seed);
        }
    };
    struct Entry
    {
        Row row;
        bool isConnection = false;
        std::list<int>::iterator place; // in m_replaceable, unless it is a connection that lasts
    };

    static Key keyOf(const Peer &peer);
    int rowOf(const Peer &peer, qint64 nowUs);
    int add(const Peer &peer, const QString &name, bool isConnection, qint64 nowUs);
    int freeRow();
    void touch(Entry *entry);

    QVector<Entry> m_rows;
    QHash<Key, int> m_present;
    std::list<int> m_replaceable; // rows, the one that was silent for longest first
    Rest m_rest;
    quint64 m_changes = 0;
};
