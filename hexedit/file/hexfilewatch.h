#pragma once

// Notices that another program has changed the file under the editor, as soon
// as the system reports it or a caller runs check(). Compares the file's size
// and time; does not know its bytes.

#include <QDateTime>
#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

// What a file looked like at a moment.
struct FileStamp
{
    bool exists = false;
    qint64 size = 0;
    QDateTime time;
    bool operator==(const FileStamp &other) const
    {
        return exists == other.exists && size == other.size && time == other.time;
    }
    static FileStamp of(const QString &fileName); // behind all links
};

class HexFileWatch : public QObject
{
    Q_OBJECT

public:
    explicit HexFileWatch(QObject *parent = nullptr);

    // The file and what it looked like when its bytes were the editor's; an
    // empty name follows none.
    void follow(const QString &fileName, const FileStamp &stamp);
    const FileStamp &stamp() const { return m_stamp; }

    bool isGone() const { return !m_last.exists; }
    bool differs() const { return !(m_last == m_stamp); } // when last looked at
    // Reports nothing about the state that the file is in now.
    void acknowledge();
    void setPaused(bool paused) { m_paused = paused; } // while we write it ourselves

public slots:
    void check();

signals:
    void changed(); // from what was last seen, perhaps back to the stamp

private:
    void watch();

    QString m_fileName;
    FileStamp m_stamp;
    FileStamp m_last;
    bool m_paused = false;
    QFileSystemWatcher m_watcher;
    QTimer m_settle;
};
