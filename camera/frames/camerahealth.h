#pragma once

// The quality of a camera link: frames and dropped bytes of each sender and device,
// the pace at which frames arrive and are shown, and the last faults. Times are in
// milliseconds of any clock that does not go back; setNow() passes them in. Owns
// these counts; knows no link and no picture.

#include "cameraevent.h"

#include <QString>
#include <QVector>

// Frames a second, measured over each period between two calls of tick().
struct CameraRate
{
    double now = 0;
    double min = 0;
    double max = 0;
    bool isKnown = false; // a period has passed

    void add(double rate);
};

struct CameraHealthRow
{
    static constexpr int noDevice = -1;

    QString sender;
    int device = noDevice; // 0 or 1; noDevice: what belongs to no frame

    qint64 good = 0;
    qint64 wrongChecksum = 0; // complete, dropped or not
    qint64 cutShort = 0;      // without an end
    qint64 skipped = 0;       // a newer one arrived before they were shown
    qint64 undecodable = 0;
    qint64 lostBytes = 0; // of no complete frame

    CameraRate received; // complete frames
    CameraRate shown;
    qint64 longestGapMs = 0; // between two complete frames, also the current one
    qint64 lastFrameMs = -1; // when the last complete one arrived; -1: none
};

struct CameraFault
{
    enum Kind { WrongChecksum, CutShort, UnknownBytes, Undecodable };

    Kind kind = UnknownBytes;
    QString sender;
    int device = CameraHealthRow::noDevice;
    qint64 offset = 0; // in the bytes of the sender
    qint64 bytes = 0;  // dropped, or of the frame's data
    QByteArray head;   // its first bytes
    qint64 atMs = 0;
};

class CameraHealth
{
public:
    static constexpr int maxFaults = 10;
    static constexpr qint64 lacksFramesMs = 3000;
    static constexpr qint64 lacksFramesBytes = 1000; // less is not a picture
    // Any host may send datagrams: beyond this limit, the row that has been unchanged
    // for longest goes. The total keeps what it counted.
    static constexpr int maxRows = 32;

    void setNow(qint64 nowMs) { m_now = nowMs; }
    qint64 now() const { return m_now; }

    void addFrame(const QString &sender, const CameraEvent &image);
    void addLoss(const QString &sender, const CameraLoss &loss);
    void addShown(const QString &sender, int device);
    void addSkipped(const QString &sender, int device);
    void addUndecodable(const QString &sender, int device, qint64 offset, const QByteArray &data);

    // Ends a period of the rates, about once a second.
    void tick();
    // The link has closed: until the next frame no time counts.
    void pause();
    void clear();

    QVector<CameraHealthRow> rows() const; // in the order in which they appeared
    const CameraHealthRow &total() const { return m_total.row; }
    const QVector<CameraFault> &faults() const { return m_faults; } // the newest first
    // Bytes arrive and are dropped, and for a while there has been no frame among them.
    bool lacksFrames() const;

private:
    struct Counted
    {
        CameraHealthRow row;
        qint64 lastChange = 0;
        qint64 periodStart = -1;     // -1: no frame yet, or paused
        qint64 framesInPeriod = 0;   // received
        qint64 picturesInPeriod = 0; // shown
        bool isPaused = false;       // since the last frame
    };

    Counted &of(const QString &sender, int device);
    void countFrame(Counted *counted, bool isGood) const;
    void endPeriod(Counted *counted) const;
    void addFault(const CameraFault &fault);

    qint64 m_now = 0;
    qint64 m_changes = 0;
    // Since the last complete frame:
    qint64 m_droppedBytes = 0;
    qint64 m_firstDropMs = 0;
    qint64 m_lastDropMs = 0;
    QVector<Counted> m_rows;
    Counted m_total;
    QVector<CameraFault> m_faults;
};
