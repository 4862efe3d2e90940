#pragma once

// The incomplete frames of each sender of a camera link, so that two senders do not
// mix, and the count of what was lost. Knows no link and shows nothing.

#include "frameassembler.h"
#include "jpegscanner.h"

#include <QHash>
#include <QString>

class CameraStreams
{
public:
    // Any host may send datagrams: beyond this limit, the sender that has been
    // silent for longest is forgotten. The connections of a server have no limit.
    static constexpr int maxDatagramSenders = 16;

    struct Stream
    {
        FrameAssembler packets;
        JpegScanner jpeg;
        qint64 lastUse = 0;
        bool lossTold = false; // the user knows of the loss since the last complete packet
    };

    Stream &of(const QString &sender, bool sendsDatagrams);
    bool contains(const QString &sender) const { return m_streams.contains(sender); }
    // The sender has left; an incomplete frame of it is counted.
    void end(const QString &sender);
    void clear(); // not the counts

    // Whether a sender has been forgotten since clear(); true once only.
    bool takeForgotten();

    // Counts what the stream has lost. Returns the reason when the user is to see
    // it, once for consecutive losses; otherwise an empty text.
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
