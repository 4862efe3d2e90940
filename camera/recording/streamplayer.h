#pragma once

// Plays a recorded stream: hands out its bytes at the times at which they arrived, with
// long pauses shortened, or as fast as they can be handled. Owns the open file; does not know what the bytes
// are.

#include "streamfile.h"

#include <QElapsedTimer>
#include <QFile>
#include <QObject>
#include <QTimer>

#include <functional>
#include <optional>

class StreamPlayer : public QObject
{
    Q_OBJECT

public:
    explicit StreamPlayer(QObject *parent = nullptr);

    // Empty, or why the file can't be played, for the user. The first record comes from
    // the event loop.
    QString start(const QString &fileName, bool isFast);
    // While that is true, nothing is played.
    void setThrottle(const std::function<bool()> &isBehind) { m_isBehind = isBehind; }
    void stop(); // emits ended() where it was playing
    bool isPlaying() const { return m_file.isOpen(); }
    const StreamHead &head() const { return m_reader.head(); }
    int permille() const;                      // of the file
    qint64 timeUs() const { return m_timeUs; } // of the last record, since the recording began

signals:
    void played(const StreamRecord &record);
    // fault: the rest of the file can't be read, for the user.
    void ended(const QString &fault);

private:
    void play();
    void readNext();
    void end(const QString &fault);

    QFile m_file;
    StreamReader m_reader;
    std::optional<StreamRecord> m_next;
    qint64 m_timeUs = 0;
    qint64 m_skippedUs = 0; // of pauses
    bool m_isFast = false;
    std::function<bool()> m_isBehind;
    QElapsedTimer m_clock;
    QTimer m_timer;
};
