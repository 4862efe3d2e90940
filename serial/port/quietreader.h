#pragma once

// Reads a port packet by packet: gathers what comes in until the line has been
// quiet for some time. A busy line is read in pieces meanwhile, so that they
// can be recorded. Does not read while too much is pending (back-pressure):
// what is not read stays with the system, and a sender that can wait, waits.

#include <QByteArrayList>
#include <QObject>
#include <QTimer>

#include <functional>

class QextSerialPort;

class QuietReader : public QObject
{
    Q_OBJECT

public:
    // Bytes that were handed out and are not shown yet come from backlog.
    // The port must outlive the reader.
    QuietReader(QextSerialPort *port, std::function<qint64()> backlog, QObject *parent);

    void setQuietTime(int ms) { m_quiet.setInterval(ms); }
    // The port may have something to read.
    void handleArrival();
    // Ends the packet: what has arrived is handed out at once.
    void takePacket();
    // The same, and nothing further is expected.
    void stop();

    bool isPaused() const { return m_paused.isActive(); }

signals:
    void pieceRead(QByteArray bytes); // in the order of arrival, each byte once
    // The pieces of one packet.
    void packetRead(QByteArrayList pieces, qint64 size);
    void quiet(); // for so long; the packet is to be taken
    // A packet has been going on for a while; 0 when it has ended.
    void gathering(qint64 bytes);

private:
    void takePiece();
    void checkBacklog();
    void showGathering();

    QextSerialPort *m_port;
    std::function<qint64()> m_backlog;
    QTimer m_quiet;
    QTimer m_paused;
    QTimer m_progress;
    QByteArrayList m_pieces;
    qint64 m_bytes = 0; // of them
    bool m_gatheringShown = false;
};
