#pragma once

// A camera board on a line, in real time: frames at their rate, replies when
// they are asked for. The line is two functions of its owner.

#include "cameraboard.h"
#include "commandline.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>

namespace Boardsim {

struct CameraOptions : CameraSettings
{
    bool isStill = false; // the color bars

    void addTo(CommandLine &line);
};

class CameraStream : public QObject
{
    Q_OBJECT

public:
    struct Line
    {
        std::function<void(const QByteArray &)> write;
        std::function<qint64()> queued; // bytes that the line has not accepted
    };

    CameraStream(const CameraSettings &settings, Line line, QObject *parent = nullptr);

    void start();
    void stop();
    void receive(const QByteArray &bytes);
    void sendDue(); // also when the line has room again

    qint64 framesSent() const { return m_sent; }

signals:
    void finished(); // all frames have been handed to the line

private:
    void send(const QByteArray &bytes);

    CameraSettings m_settings;
    CameraBoard m_board;
    Line m_line;
    QTimer m_tick;
    QElapsedTimer m_clock;
    QList<QByteArray> m_ready; // frames as fast as possible: made beforehand
    qint64 m_due = 0;          // frames due by the clock
    qint64 m_sent = 0;         // frames of all devices together
    bool m_over = false;
    bool m_inPieces = false; // is being sent, and nothing may come between them
};

} // namespace Boardsim
