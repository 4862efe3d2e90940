#pragma once

// A recording of the camera page: what is recorded, since when, and how it goes; and
// single pictures on demand. Hands everything on to a writer with a thread of its own.

#include "recordingwriter.h"
#include "streamfile.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <array>
#include <functional>
#include <optional>
#include <vector>

class CameraRecorder : public QObject
{
    Q_OBJECT

public:
    using Kind = RecordingOutput::Kind;

    struct Target
    {
        Kind kind = Kind::Stream;
        QString folder;
        int intervalMs = 0; // at least between two pictures of a device; 0: each frame
    };

    explicit CameraRecorder(QObject *parent = nullptr);

    // Ends what is being recorded. head: how a stream's bytes are read when the first
    // ones arrive.
    void start(const Target &target, const std::function<StreamHead()> &head);
    void stop();
    bool isOn() const { return m_writer && !m_isStopping; }
    bool isStopping() const { return m_isStopping; } // what is pending is being written
    // All files are complete.
    bool isFinished() const { return !m_writer && m_pictures.empty(); }
    bool waitForFinished(int ms);
    // As it was some time ago; see changed(). Of the last recording when that has ended.
    const RecordingWriter::Status &status() const { return m_status; }
    Kind kind() const { return m_target.kind; }
    qint64 elapsedMs() const { return m_elapsedMs; }

    // What arrives, whether it is recorded or not.
    void addBytes(const QString &sender, const QByteArray &bytes, bool isDatagram);
    void addEnd(const QString &sender, bool inOrder); // an empty sender: the link with all
    void addFrame(int device, const CameraFrameData &frame);

    // Frames of a stream that is played have its time: us since it began, rising; none:
    // nothing is played.
    void setPlayedTime(const std::optional<qint64> &us);
    // The disk does not follow; what is played can wait for it.
    bool isBehind() const { return isOn() && m_writer->isBehind(); }

    // Saves the last frame of a device as a picture. False: there is none yet.
    bool takePicture(int device, const QString &folder);

signals:
    void changed(); // isOn(), isFinished() or status()
    // For the user.
    void failed(const QString &text);
    void pictureSaved(const QString &fileName);

private:
    void addRecord(const StreamRecord &record);
    bool isDue(int device);
    qint64 nowUs() const;
    void poll();
    void pollPictures();

    Target m_target;
    std::function<StreamHead()> m_head; // empty when that has been written
    qint64 m_beganMs = 0;               // since 1970
    std::unique_ptr<RecordingWriter> m_writer;
    std::vector<std::unique_ptr<RecordingWriter>> m_pictures; // on demand
    RecordingWriter::Status m_status;
    bool m_isStopping = false;
    QElapsedTimer m_clock;
    std::optional<qint64> m_playedUs;
    qint64 m_shiftUs = 0;   // from the clock, or the played time, to that of the recording
    qint64 m_elapsedMs = 0; // of the recording, up to its stop
    std::array<CameraFrameData, 2> m_lastFrames;
    std::array<qint64, 2> m_lastPictureUs{};
    QTimer m_poll;
};
