#pragma once

// A board that speaks datagrams: returns them to their senders, counts them,
// sends the payload in datagrams at a rate, or is a camera.

#include "boardbase.h"
#include "camerastream.h"
#include "payloadoptions.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTimer>
#include <QUdpSocket>

namespace Boardsim {

class UdpBoard : public BoardBase
{
    Q_OBJECT

public:
    enum class Act { Echo, Silent, Flood, Camera };
    struct Options
    {
        QString address = QStringLiteral("127.0.0.1"); // own, or the receiver's
        int port = 0;                                  // own; 0 for any
        int toPort = 0;                                // the receiver's
        Act act = Act::Echo;
        int datagramsPerSecond = 20; // flood
        int messageBytes = 100;      // flood
        qint64 totalBytes = -1;      // flood; -1 without end
        int startDelayMs = 200;
        QString recordFile;
        PayloadOptions payload;
        CameraOptions camera;

        void addTo(CommandLine &line);
    };

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
