#pragma once

// A byte log on disk: keeps everything that is appended and reads it back,
// without holding it in memory. When the disk refuses (full, read-only), the
// bytes that follow are kept in memory up to a limit, so that nothing is lost
// while the user makes room; they are written when there is some.

#include "bytequeue.h"

#include <QByteArray>
#include <QString>
#include <memory>

class QIODevice;
class SpoolFile;

class ByteSpool
{
public:
    enum class State {
        OnDisk,    // all bytes are in the file, or will be with the next flush()
        InMemory,  // the disk refuses; the newest bytes are in memory
        Incomplete // the limit in memory was reached: bytes were dropped
    };

    // The file is made in the folder at the first byte, or in the system's
    // folder for temporary files where that cannot be written. It is removed
    // with the object. maxMemory: bytes kept when the disk refuses.
    ByteSpool(const QString &folder, const QString &stem, int maxMemory = 64 * 1024 * 1024);
    ~ByteSpool();
    Q_DISABLE_COPY_MOVE(ByteSpool)

    // Small amounts are collected in memory until flush(), which the owner
    // calls some times a second, so that a busy line costs few writes.
    State append(const char *bytes, qint64 size);
    State flush();
    State state() const { return m_state; }

    // Bytes that can be read back.
    qint64 size() const { return m_fileSize + m_memory.size(); }

    // Up to maxBytes from an offset; fewer do not mean the end. Empty at the end,
    // or where the file cannot be read back (then `failed` is set).
    QByteArray read(qint64 offset, qint64 maxBytes, bool *failed = nullptr) const;

    // Removes bytes at the end.
    void chop(qint64 bytes);
    void clear();

private:
    bool openFile();
    void handleRefusal();
    qint64 appendToFile(const char *bytes, qint64 size);

    QString m_folder;
    QString m_stem;
    int m_maxMemory;
    std::unique_ptr<SpoolFile> m_file;
    qint64 m_fileSize = 0;
    ByteQueue m_memory;        // not in the file yet
    qint64 m_sinceRefusal = 0; // bytes
    State m_state = State::OnDisk;
};
