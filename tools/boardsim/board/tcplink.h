#pragma once

// One connection of a board on the network, and what the board does with it.

#include "camerastream.h"
#include "payloadoptions.h"

#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTimer>

class QFile;

namespace Boardsim {

struct TcpOptions
{
    enum class Act {
        Echo,      // returns what it receives
        Silent,    // reads and counts
        Flood,     // the first megabyte of the payload, again and again
        Log,       // the log's lines at a rate; returns what it receives
        Talk,      // messages of the payload at a pace
        Drip,      // the payload byte by byte, at a pace
        HalfClose, // sends the payload, ends sending, and reads on
        Reset,     // sends the payload and resets the connection
        Vanish,    // closes at once
        Deaf,      // never reads
        Camera     // sends pictures and answers register requests
    };

    bool connects = false;                         // or listens
    QString address = QStringLiteral("127.0.0.1"); // to listen on or to connect to
    int port = 0;                                  // own, 0 for any; or the server's
    Act act = Act::Echo;
    int peers = 1; // connections to make
    int startDelayMs = 200;
    int linesPerSecond = 20; // log
    int messageBytes = 100;  // talk
    int periodMs = 100;      // talk, drip: pace; also between attempts to connect
    int durationMs = -1;     // flood: ends after this; -1 never
    qint64 totalBytes = -1;  // on each connection; -1 without end
    QString recordFile;
    PayloadOptions payload;
    CameraOptions camera;

    void addTo(CommandLine &line);
};

class TcpLink : public QObject
{
    Q_OBJECT

public:
    // Owns the socket, which is connected. Writes what it receives to the record
    // if that is open.
    TcpLink(QTcpSocket *socket, const TcpOptions &options, QFile *record, QObject *parent);

    qint64 written() const { return m_written; } // bytes that the system has accepted
    qint64 read() const { return m_read; }

signals:
    void closed();
    void finished(); // all was sent that was to be sent

private:
    void start();
    void put(const QByteArray &bytes);
    void countWritten();
    void readSome();
    void sendMore();
    void sendMessage();
    void sendLogLine();
    void endSending();

    QTcpSocket *m_socket;
    const TcpOptions &m_options;
    QFile *m_record;
    Payload m_payload;
    QByteArray m_block; // flood
    CameraStream *m_camera = nullptr;
    QTimer m_pace;
    QElapsedTimer m_clock;
    quint32 m_logLine = 0;
    qint64 m_left;
    qint64 m_handed = 0; // to the socket
    qint64 m_written = 0;
    qint64 m_read = 0;
    bool m_sending = false;
};

} // namespace Boardsim
