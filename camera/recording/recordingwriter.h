#pragma once

// Writes a recording in a thread of its own, so that a slow disk never delays the link
// or the window. What the disk can't follow is dropped and counted; a disk that refuses
// ends the recording.

#include "recordingoutput.h"

#include <QByteArray>
#include <QString>

#include <memory>

class RecordingWriter
{
public:
    // Bytes that are pending for the disk; one item is always accepted.
    static constexpr qint64 maxPendingBytes = 64LL * 1024 * 1024;

    struct Status
    {
        QString lastFile;
        QString reason;         // why the disk refused; empty while it does not
        qint64 items = 0;       // frames, or for a stream arrivals, on the disk
        qint64 bytes = 0;       // on the disk
        qint64 dropped = 0;     // items that the disk could not follow
        qint64 undecodable = 0; // frames
        qint64 freeBytes = -1;  // of the disk; -1: unknown yet
        bool isFinished = false;
    };

    using Kind = RecordingOutput::Kind;

    RecordingWriter(Kind kind, const QString &folder, const QString &stem);
    // The thread goes on with what is pending, on its own where that takes long.
    ~RecordingWriter();
    RecordingWriter(const RecordingWriter &) = delete;
    RecordingWriter &operator=(const RecordingWriter &) = delete;

    void add(const RecordingOutput::Item &item);
    // Writes what is pending and completes the files.
    void finish();
    // True when that is done; waits at most that long.
    bool waitForFinished(int ms);
    // More than half of what may be pending is.
    bool isBehind() const;
    Status status() const;

private:
    class Thread;
    std::shared_ptr<Thread> m_thread; // the other owner is the thread itself
};
