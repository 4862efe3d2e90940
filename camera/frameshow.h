#pragma once

// Decodes frames and hands out their pictures, not faster than they can be
// looked at: of what comes meanwhile only the newest of each device waits, and
// the others are counted. Knows no stream and no widget.

#include <QElapsedTimer>
#include <QImage>
#include <QObject>
#include <QTimer>

#include <array>
#include <optional>

// What a device's frames are.
struct ImageRecord
{
    quint8 format = 4;
    quint16 width = 320;
    quint16 height = 240;

    enum { Jpg = 1, Bmp = 2, Png = 3, Rgb565 = 4, Rgb888 = 5, Yuv422 = 7 };
    static QString formatName(int format); // "*.jpg" for unknown codes
};

struct CameraFrameData
{
    QByteArray data;
    std::optional<ImageRecord> record; // none: an image file
    bool bigEndian = false;
};

class FrameShow : public QObject
{
    Q_OBJECT

public:
    explicit FrameShow(QObject *parent = nullptr);

    void add(int device, const CameraFrameData &frame);

    qint64 shown() const { return m_shown; }
    qint64 skipped() const { return m_skipped; }   // a newer one came before they could be shown
    qint64 unusable() const { return m_unusable; } // no picture could be made of them
    void clearCounts();

    // Null where no picture can be made of it.
    static QImage decode(const CameraFrameData &frame);

signals:
    void pictureReady(int device, QImage picture);
    void undecodable(int device);

private:
    void showNewest();

    std::array<std::optional<CameraFrameData>, 2> m_waiting;
    size_t m_device = 0; // shown last
    QTimer m_timer;
    QElapsedTimer m_sinceShown;
    qint64 m_pauseMs = 0;
    qint64 m_shown = 0;
    qint64 m_skipped = 0;
    qint64 m_unusable = 0;
};
