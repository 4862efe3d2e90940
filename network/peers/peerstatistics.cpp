#include "peerstatistics.h"

#include <utility>

// A socket for both families reports IPv4 peers as mapped ones.
PeerStatistics::Key PeerStatistics::keyOf(const Peer &peer)
{
    bool isIpv4 = false;
    const quint32 ipv4 = peer.address.toIPv4Address(&isIpv4);
    return {peer.id, isIpv4 ? QHostAddress(ipv4) : peer.address, peer.port};
}

void PeerStatistics::joined(const Peer &peer, const QString &name, qint64 nowUs)
{
    left(peer, nowUs); // whose leaving was not reported
    add(peer, name, true, nowUs);
}

void PeerStatistics::left(const Peer &peer, qint64 nowUs)
{
    const auto found = m_present.find(keyOf(peer));
    if (found == m_present.end())
        return;
    const int row = found.value();
    Entry &entry = m_rows[row];
    entry.row.leftUs = nowUs;
    if (std::exchange(entry.isConnection, false))
        entry.place = m_replaceable.insert(m_replaceable.end(), row);
    m_present.erase(found);
    ++m_changes;
}

void PeerStatistics::allLeft(qint64 nowUs)
{
    const QHash<Key, int> present = m_present;
    for (const int row : present)
        left(m_rows.at(row).row.peer, nowUs);
}

void PeerStatistics::received(const Peer &peer, const QByteArray &bytes, qint64 nowUs)
{
    ++m_changes;
    const int index = rowOf(peer, nowUs);
    if (index < 0) {
        m_rest.received += bytes.size();
        return;
    }
    Row &row = m_rows[index].row;
    row.received += bytes.size();
    row.lastUs = nowUs;
    row.last = bytes.left(previewBytes);
    row.lastSize = bytes.size();
    touch(&m_rows[index]);
}

void PeerStatistics::sent(const Peer &peer, qint64 bytes, qint64 nowUs)
{
    ++m_changes;
    const int index = rowOf(peer, nowUs);
    if (index < 0) {
        m_rest.sent += bytes;
        return;
    }
    m_rows[index].row.sent += bytes;
    touch(&m_rows[index]);
}

// -1 for a connection without a row.
int PeerStatistics::rowOf(const Peer &peer, qint64 nowUs)
{
    const auto found = m_present.constFind(keyOf(peer));
    if (found != m_present.constEnd())
        return found.value();
    return peer.id == 0 ? add(peer, peer.text(), false, nowUs) : -1;
}

int PeerStatistics::add(const Peer &peer, const QString &name, bool isConnection, qint64 nowUs)
{
    ++m_changes;
    const int index = freeRow();
    if (index < 0) {
        ++m_rest.rows;
        return -1;
    }
    Entry &entry = m_rows[index];
    entry.row.peer = peer;
    entry.row.name = name;
    entry.row.isDatagram = !isConnection;
    entry.row.sinceUs = nowUs;
    entry.isConnection = isConnection;
    if (!isConnection)
        entry.place = m_replaceable.insert(m_replaceable.end(), index);
    m_present.insert(keyOf(peer), index);
    return index;
}

// An empty row; -1 where all belong to connections that last.
int PeerStatistics::freeRow()
{
    if (m_rows.size() < maxRows) {
        m_rows.append(Entry());
        return m_rows.size() - 1;
    }
    if (m_replaceable.empty())
        return -1;
    const int index = m_replaceable.front();
    m_replaceable.pop_front();
    const Row old = std::exchange(m_rows[index], Entry()).row;
    if (old.leftUs == 0)
        m_present.remove(keyOf(old.peer));
    ++m_rest.rows;
    m_rest.received += old.received;
    m_rest.sent += old.sent;
    return index;
}

void PeerStatistics::touch(Entry *entry)
{
    if (!entry->isConnection)
        m_replaceable.splice(m_replaceable.end(), m_replaceable, entry->place);
}

void PeerStatistics::clear()
{
    QVector<Row> connections;
    for (const Entry &entry : qAsConst(m_rows)) {
        if (entry.isConnection)
            connections.append(entry.row);
    }
    m_rows.clear();
    m_present.clear();
    m_replaceable.clear();
    m_rest = Rest();
    for (const Row &row : qAsConst(connections))
        add(row.peer, row.name, true, row.sinceUs);
    ++m_changes;
}
