#pragma once

// One connection of a board on the network, and what the board does with it.

#include "camerastream.h"
#include "options.h"

#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTimer>

class QFile;

namespace Boardsim {

class TcpLink : public QObject
{
    Q_OBJECT

public:
    // Owns the socket, which is connected. What comes is written
    // to the record if that is open.
    TcpLink(QTcpSocket *socket, const Options &options, QFile *record, QObject *parent);

    qint64 written() const { return m_written; } // bytes that the system has taken
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
    const Options &m_options;
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
