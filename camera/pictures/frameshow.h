#pragma once

// Decodes frames and emits their pictures, not faster than they can be looked at:
// of the frames that arrive meanwhile, only the newest of each device is pending,
// and the others are counted as skipped. Knows no stream and no widget.

#include "pixelformat.h"

#include <QElapsedTimer>
#include <QImage>
#include <QObject>
#include <QTimer>

#include <array>
#include <optional>

struct CameraFrameData
{
    QByteArray data;
    std::optional<ImageRecord> record; // none: an image file
    bool bigEndian = false;
    QString sender = {}; // for the signals only
    qint64 offset = 0;   // the same
};

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

    // Null where the data is no picture.
    static QImage decode(const CameraFrameData &frame);

signals:
    void pictureReady(int device, QImage picture, const QString &sender);
    void undecodable(int device, const CameraFrameData &frame);
    void skipping(int device, const QString &sender); // for a newer one

private:
    void showNewest();

    std::array<std::optional<CameraFrameData>, 2> m_pending;
    size_t m_device = 0; // of the frame shown last
    QTimer m_timer;
    QElapsedTimer m_sinceShown;
    qint64 m_pauseMs = 0;
    qint64 m_shown = 0;
    qint64 m_skipped = 0;
    qint64 m_unusable = 0;
};
