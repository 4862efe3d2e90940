#pragma once

// The incomplete frames of each sender of a camera link, so that two senders do not
// mix, and the formats that each has announced. Counts what was lost in the health of
// the link, which outlives this. Knows no link and shows nothing.

#include "camerahealth.h"
#include "frameassembler.h"
#include "frameresynchronizer.h"
#include "jpegscanner.h"

#include <QHash>
#include <QString>

#include <array>

class CameraStreams
{
public:
    // Any host may send datagrams: beyond this limit, the sender that has been
    // silent for longest is forgotten. The connections of a server have no limit.
    static constexpr int maxDatagramSenders = 16;

    struct Stream
    {
        FrameAssembler packets;
        FrameResynchronizer bytewise; // instead of packets, where the user wants it
        JpegScanner jpeg;
        qint64 lastUse = 0;
        std::array<CameraEvent, 2> announced; // by device; of another kind: not yet
        bool lossTold = false;                // the user knows of the loss since the last complete packet
    };

    explicit CameraStreams(CameraHealth *health)
        : m_health(health)
    {
    }

    Stream &of(const QString &sender, bool sendsDatagrams);
    bool contains(const QString &sender) const { return m_streams.contains(sender); }
    // The sender's announcement; null where there is none.
    const CameraEvent *announced(const QString &sender, int device) const;
    // The user has chosen another format for the device.
    void forgetAnnounced(int device);
    // The sender has left, or all; what is incomplete is counted.
    void end(const QString &sender);
    void clear();
    // The streams are read in another way from here on: what is incomplete is counted.
    void restart();

    // Whether a sender has been forgotten since clear(); true once only.
    bool takeForgotten();

    // Counts what the stream has lost. Returns the reason when the user is to see
    // it, once for consecutive losses; otherwise an empty text.
    QString countLoss(const QString &sender, Stream &stream);

private:
    void countRest(const QString &sender, Stream &stream);

    CameraHealth *m_health;
    QHash<QString, Stream> m_streams;
    qint64 m_uses = 0;
    bool m_hasForgotten = false;
    bool m_forgottenTold = false;
};
