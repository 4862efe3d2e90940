#pragma once

// The files of a session log. The user names one, such as "board.log"; a session
// makes "board_20260131_235959.log" and, when that is full or old, "..._2.log" and so
// on; or all sessions go on in "board.log", "board_2.log" and so on. Where all
// together become too large, the oldest are removed.

#include <QFile>
#include <QString>
#include <QVector>

#include <memory>

class LogFiles
{
public:
    struct Target
    {
        QString fileName; // as the user named it
        bool isAppended = false;
        qint64 maxBytes = 0;      // of a file; 0: no limit
        qint64 maxMs = 0;         // since it was opened; 0: no limit
        qint64 maxTotalBytes = 0; // of all files of this name; 0: no limit
    };

    explicit LogFiles(const Target &target);

    // Opens the file for bytes that are written now. Empty, or the reason for the user.
    QString prepare(qint64 bytes, qint64 nowMs);
    // Less than all where the system refuses, see reason().
    qint64 write(const char *bytes, qint64 size);
    QString reason() const;

    void close() { m_file.reset(); }

    QString fileName() const { return m_file ? m_file->fileName() : QString(); }

private:
    struct Part
    {
        QString fileName;
        qint64 bytes = 0;
    };

    QString open(qint64 bytes, qint64 nowMs);
    bool openLastPart(qint64 bytes);
    QString nameOf(int number) const;
    void findParts();
    void removeOldest();
    bool isFull(qint64 bytes, qint64 nowMs) const;

    Target m_target;
    QString m_stem;   // with the folder
    QString m_suffix; // with the point
    std::unique_ptr<QFile> m_file;
    QVector<Part> m_parts; // before the file; oldest first
    int m_number = 0;
    qint64 m_size = 0;
    qint64 m_beganMs = 0;
    qint64 m_checkedMs = 0;
};
