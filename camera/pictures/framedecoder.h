#pragma once

// Decodes one frame at a time in a thread of its own, so that a large picture does
// not block the window. A frame goes in and a picture comes out; nothing is shared
// but the frame's bytes, which neither side changes. The thread begins with the first
// frame.

#include "pictureframe.h"

#include <QImage>
#include <QObject>
#include <QThread>

class FrameDecoder : public QObject
{
    Q_OBJECT

public:
    explicit FrameDecoder(QObject *parent = nullptr);
    ~FrameDecoder() override; // waits for the frame in work, which is not reported

    bool isBusy() const { return m_isBusy; }
    void start(const CameraFrameData &frame); // not while it is busy

signals:
    // Not before start has returned. The picture is null where the frame is none, and
    // else as the screen has it: a pixmap of it needs no conversion.
    void finished(const QImage &picture);
    // For this class alone: into the thread, and out of it.
    void begun();
    void decoded(const QImage &picture);

private:
    void report(const QImage &picture);

    QThread m_thread;
    QObject m_worker;        // lives in the thread
    CameraFrameData m_frame; // left alone while it is decoded
    bool m_isBusy = false;
};
