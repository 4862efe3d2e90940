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

    // valueLength: of a register, in bytes. A datagram may come from anybody.
    void receive(const QString &sender, const QByteArray &bytes, bool isDatagram, int valueLength);
    // What is incomplete belongs to the link that it came over.
    void forget() { m_streams.clear(); }
    void forget(const QString &sender) { m_streams.end(sender); }
    // Whether a datagram's sender may be the board that is asked at that address. It
    // may answer from another port, unless the asked one is known to send.
    bool mayAnswer(const QString &sender, const QHostAddress &address, quint16 port) const;

    qint64 frames() const { return m_frames; } // reported; one that is being reported not yet
    qint64 sinceFirstMs() const;               // since the first frame began
    const CameraStreams &streams() const { return m_streams; }
    void clearCounts();

signals:
    void jpeg(const QByteArray &file);
    void image(const CameraEvent &event);
    void format(const CameraEvent &event);
    void registerReply(const QString &sender, const CameraEvent &event);
    void wrongReplyLength();
    void faulty(const QString &reason);
    void notify(const Notice &notice);

private:
    void readPackets(const QString &sender, CameraStreams::Stream &stream, int valueLength);
    void readPacket(const QString &sender, const CameraEvent &event);
    void readJpegs(CameraStreams::Stream &stream);
    void reportLoss(CameraStreams::Stream &stream);
    void beginFrame();

    CameraStreams m_streams;
    QElapsedTimer m_clock;
    QElapsedTimer m_sinceFirst;
    bool m_isRawJpeg = false;
    bool m_dropBadChecksums = false;
    qint64 m_frames = 0;
};
