#pragma once

// What has come from each sender of a camera link and is not a complete frame yet,
// so that two senders do not mix, and what was lost of it. Knows no link and shows
// nothing.

#include "frameassembler.h"
#include "jpegscanner.h"

#include <QHash>
#include <QString>

class CameraStreams
{
public:
    // Any host may send datagrams; beyond so many senders, the one that has been
    // silent for longest is forgotten. Those of a server are known by their
    // connections.
    static constexpr int maxDatagramSenders = 16;

    struct Stream
    {
        FrameAssembler packets;
        JpegScanner jpeg;
        qint64 lastUse = 0;
        bool lossTold = false; // since the last complete packet
    };

    Stream &of(const QString &sender, bool sendsDatagrams);
    bool contains(const QString &sender) const { return m_streams.contains(sender); }
    // The sender is gone.
    void end(const QString &sender);
    void clear(); // not the counts

    // Asked once after clear(): a sender has been forgotten.
    bool takeForgotten();

    // Counts what the stream has lost. The reason where it is to be told: once for
    // all that is lost in a row; otherwise empty.
    QString countLoss(Stream &stream);
    qint64 partialFrames() const { return m_partialFrames; }
    qint64 lostBytes() const { return m_lostBytes; }
    void clearCounts();

private:
    QHash<QString, Stream> m_streams;
    qint64 m_uses = 0;
    bool m_hasForgotten = false;
    bool m_forgottenTold = false;
    qint64 m_partialFrames = 0;
    qint64 m_lostBytes = 0;
};
