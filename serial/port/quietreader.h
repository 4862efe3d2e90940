#pragma once

// Gathers what a link receives into packets: a packet ends when the line has
// been quiet for some time. The pieces of a long one are handed out meanwhile,
// so that they can be recorded. Pauses the link while too much is pending
// (back-pressure): what is not read stays with the system, and a sender that
// can wait, waits.

#include <QByteArrayList>
#include <QObject>
#include <QTimer>

#include <functional>

class Link;

class QuietReader : public QObject
{
    Q_OBJECT

public:
    // Bytes that were handed out and are not shown yet come from backlog.
    // The link must outlive the reader.
    QuietReader(Link *link, std::function<qint64()> backlog, QObject *parent);

    void setQuietTime(int ms) { m_quietMs = ms; }
    // While inactive, what is received belongs to another reader. Ends the packet
    // so far.
    void setActive(bool active);

    // Received bytes that the other reader has not used.
    void append(const QByteArray &bytes);
    // Restarts the quiet time.
    void handleArrival();
    // Ends the packet: it is handed out at once.
    void endPacket();
    // The same, and nothing further is expected for now.
    void stop();

    bool isPaused() const { return m_paused.isActive(); }
    // The last byte of the packet so far; 0 where there is none.
    char lastByte() const;

signals:
    void pieceRead(QByteArray bytes); // in the order of arrival, each byte once
    // The pieces of one packet.
    void packetRead(QByteArrayList pieces, qint64 size);
    void quiet(); // for the quiet time; the packet is to be ended
    // A packet has been going on for a while; 0 when it has ended.
    void gathering(qint64 bytes);

private:
    void checkQuiet();
    void checkBacklog();
    void endPiece();
    void pauseIfDue();
    void showGathering();

    Link *m_link;
    std::function<qint64()> m_backlog;
    int m_quietMs;
    qint64 m_arrivalUs = 0; // of the last bytes
    QTimer m_quiet;
    QTimer m_paused;
    QTimer m_progress;
    QByteArray m_piece; // not handed out yet
    QByteArrayList m_pieces;
    qint64 m_pieceBytes = 0; // of m_pieces
    bool m_active = true;
    bool m_stopping = false;
    bool m_gatheringShown = false;
};
