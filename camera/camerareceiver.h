#pragma once

// Makes pictures, announcements and replies of the bytes that a camera page
// receives, each sender's by themselves, and counts frames and losses. Does not
// know where the bytes come from, nor how a picture is decoded or shown.

#include "camerastreams.h"
#include "notice.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QObject>

class CameraReceiver : public QObject
{
    Q_OBJECT

public:
    explicit CameraReceiver(QObject *parent = nullptr);

    // The bytes are JPEG files instead of packets.
    void setRawJpeg(bool raw);
    // Instead of reporting them as good.
    void setDropBadChecksums(bool drop) { m_dropBadChecksums = drop; }
    // Every byte may begin a packet.
    void setResynchronizes(bool resynchronizes);

    // valueLength: of a register, in bytes. A datagram may come from anybody.
    void receive(const QString &sender, const QByteArray &bytes, bool isDatagram, int valueLength);
    // What is incomplete belongs to the link that it came over.
    void forget();
    void forget(const QString &sender);
    // The same; the sender has closed in order, which also ends a JPEG.
    void finish(const QString &sender);
    // As the sender has announced it for the device; null where it has not.
    const CameraEvent *announced(const QString &sender, int device) const
    {
        return m_streams.announced(sender, device);
    }
    void forgetAnnounced(int device) { m_streams.forgetAnnounced(device); }
    // Whether a datagram's sender may be the board that is asked at that address. It
    // may answer from another port, unless the asked one is known to send.
    bool mayAnswer(const QString &sender, const QHostAddress &address, quint16 port) const;

    qint64 frames() const { return m_frames; } // reported; one that is being reported not yet
    qint64 sinceFirstMs() const;               // since the first frame began
    const CameraHealth &health() const { return m_health; }
    void clearCounts();

    // What became of the frames that were reported.
    void countShown(const QString &sender, int device);
    void countSkipped(const QString &sender, int device);
    void countUndecodable(const QString &sender, int device, qint64 offset, const QByteArray &data);
    // Ends a period of the rates, while the link is open.
    void tickHealth();

signals:
    void jpeg(const QString &sender, const QByteArray &file, qint64 offset);
    void image(const QString &sender, const CameraEvent &event);
    void format(const CameraEvent &event);
    void registerReply(const QString &sender, const CameraEvent &event);
    void wrongReplyLength();
    void faulty(const QString &reason);
    void notify(const Notice &notice);

private:
    void readPackets(const QString &sender, CameraStreams::Stream &stream, int valueLength);
    bool nextEvent(CameraStreams::Stream &stream, CameraEvent *event, int valueLength) const;
    void readPacket(const QString &sender, const CameraEvent &event);
    void readJpegs(const QString &sender, CameraStreams::Stream &stream);
    void reportJpeg(const QString &sender, const QByteArray &file, qint64 offset);
    void reportLoss(const QString &sender, CameraStreams::Stream &stream);
    void beginFrame();

    CameraHealth m_health;
    CameraStreams m_streams{&m_health};
    QElapsedTimer m_clock;
    QElapsedTimer m_sinceFirst;
    bool m_isRawJpeg = false;
    bool m_dropBadChecksums = false;
    bool m_resynchronizes = false;
    qint64 m_frames = 0;
};
