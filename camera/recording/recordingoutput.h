#pragma once

// The files that a recording makes in a folder, and what goes into them: the bytes as
// they came, a video for each device of each sender, or single pictures. Blocks while the disk works;
// RecordingWriter calls it in a thread of its own.

#include "frameshow.h"

#include <QFile>
#include <QString>

#include <memory>

class RecordingOutput
{
public:
    enum class Kind { Stream, Video, Pictures };

    // What is added: bytes for a stream, the first with its head, otherwise a frame.
    struct Item
    {
        QByteArray record;
        int device = 0;
        CameraFrameData frame;
        qint64 timeUs = 0; // rising

        qint64 size() const { return record.size() + frame.data.size(); }
    };

    struct Result
    {
        qint64 bytes = 0;      // on the disk
        bool isPicture = true; // that could be decoded
        QString reason;        // why the disk refuses, for the user; empty where it does not
    };

    virtual ~RecordingOutput() = default;
    virtual Result add(const Item &item) = 0;
    // Makes what has been written readable, if this program ends unexpectedly. The reason
    // where a file is gone, to which one can write all the same.
    virtual QString secure() { return {}; }
    virtual QString finish() { return {}; } // the reason where that fails
    QString lastFile() const { return m_lastFile; }

    // stem: of all files' names, such as "camera_20260131_235959".
    static std::unique_ptr<RecordingOutput> make(Kind kind, const QString &folder, const QString &stem);

protected:
    QString m_lastFile;
};
