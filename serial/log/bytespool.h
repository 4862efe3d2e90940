#pragma once

// A byte log on disk: takes everything that arrives and hands it out again,
// without holding it in memory. When the disk refuses (full, read-only), what
// comes after is kept in memory up to a bound, so that nothing is lost while
// the user makes room; it is written when there is some.

#include <QByteArray>
#include <QString>
#include <memory>

class QIODevice;
class SpoolFile;

class ByteSpool
{
public:
    // Where the bytes went so far.
    enum class State {
        OnDisk,    // all of them are in the file
        InMemory,  // the newest ones are in memory, because the file takes no more now
        Incomplete // the bound in memory was reached: bytes were dropped
    };

    // The file is made in the folder at the first byte, or in the system's
    // folder for temporary files where that cannot be written. It is removed
    // with the object. memoryBound: bytes kept in memory when the disk refuses.
    ByteSpool(const QString &folder, const QString &stem, qint64 memoryBound = 64LL * 1024 * 1024);
    ~ByteSpool();
    Q_DISABLE_COPY_MOVE(ByteSpool)

    // Small amounts are collected in memory until flush(), which the owner
    // calls some times a second, so that a busy line costs few writes.
    State append(const char *bytes, qint64 size);
    State flush();
    State state() const { return m_state; }

    // Bytes that can be read back.
    qint64 size() const { return m_fileSize + m_memory.size(); }

    // Up to `most` bytes from an offset; fewer do not mean the end. Empty at the end, or when the file
    // cannot be read back (then `failed` is set).
    QByteArray read(qint64 offset, qint64 most, bool *failed = nullptr) const;

    void clear();

private:
    bool openFile();
    void refused();
    qint64 appendToFile(const char *bytes, qint64 size);

    QString m_folder;
    QString m_stem;
    qint64 m_memoryBound;
    std::unique_ptr<SpoolFile> m_file;
    qint64 m_fileSize = 0;
    QByteArray m_memory;
    State m_state = State::OnDisk;
};
