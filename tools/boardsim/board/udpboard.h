#pragma once

// A board that speaks datagrams: returns them to their senders, counts them,
// sends the payload in datagrams at a rate,
// or is a camera.

#include "boardbase.h"
#include "camerastream.h"
#include "options.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTimer>
#include <QUdpSocket>

namespace Boardsim {

class UdpBoard : public BoardBase
{
    Q_OBJECT

public:
    explicit UdpBoard(const Options &options, QObject *parent = nullptr);

    bool begin(QString *error) override;
    // Also "datagrams=..": that came or went.
    QString statistics() const override;

private:
    void readSome();
    void sendDue();
    void startCamera();

    Options m_options;
    QFile m_record;
    Payload m_payload;
    QUdpSocket m_socket;
    CameraStream *m_camera = nullptr;
    QTimer m_pace;
    QElapsedTimer m_clock;
    qint64 m_written = 0;
    qint64 m_read = 0;
    qint64 m_datagrams = 0;
};

} // namespace Boardsim
