#pragma once

// Has frames decoded, in a thread, and emits their pictures, not faster than they can
// be looked at: of the frames that arrive meanwhile, only the newest of each device is
// pending, and the others are counted as skipped. Knows no stream and no widget.

#include "framedecoder.h"

#include <QElapsedTimer>
#include <QImage>
#include <QObject>
#include <QPoint>
#include <QTimer>

#include <array>
#include <optional>

class FrameShow : public QObject
{
    Q_OBJECT

public:
    explicit FrameShow(QObject *parent = nullptr);

    void add(int device, const CameraFrameData &frame);

    qint64 shown() const { return m_shown; }
    qint64 skipped() const { return m_skipped; }   // a newer one arrived before they were shown
    qint64 unusable() const { return m_unusable; } // were no picture
    void clearCounts();

    // Null where the data is no picture. For any thread.
    static QImage decode(const CameraFrameData &frame);
    // The bytes of a pixel of its picture, as PixelFormat has them; empty where the
    // frame is an image file.
    static QString rawText(const CameraFrameData &frame, const QPoint &pixel);

signals:
    // The picture is as the screen has it.
    void pictureReady(int device, const QImage &picture, const CameraFrameData &frame);
    void undecodable(int device, const CameraFrameData &frame);
    void skipping(int device, const QString &sender); // for a newer one

private:
    int waitMs() const;
    void decodeNewest();
    void showDecoded(const QImage &picture);

    FrameDecoder m_decoder;
    std::array<std::optional<CameraFrameData>, 2> m_pending;
    CameraFrameData m_frame; // in work
    size_t m_device = 0;     // of the frame in work, or shown last
    QTimer m_timer;
    bool m_isSecond = false; // it is the other device's, and followed at once
    QElapsedTimer m_sinceBegun;
    QElapsedTimer m_sinceShown;
    qint64 m_costMs = 0; // of showing it
    qint64 m_shown = 0;
    qint64 m_skipped = 0;
    qint64 m_unusable = 0;
};
