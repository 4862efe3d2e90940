#pragma once

// The file of a package while it is downloaded: created, appended to, and removed
// unless it is kept. Errors are in English, for the log.

#include <QFile>

class PackageFile
{
public:
    ~PackageFile() { discard(); }

    // Replaces an older file of that name; the folder is created if missing.
    bool begin(const QString &path);
    // False when the bytes did not reach the file.
    bool append(const QByteArray &bytes);
    // Closes the file and leaves it where it is. False, and nothing is left,
    // when it is not on disk with exactly the bytes that were appended.
    bool keep();
    // Removes what has been written so far.
    void discard();

    qint64 size() const { return m_size; }
    QString error() const { return m_error; }

private:
    QFile m_file;
    qint64 m_size = 0;
    QString m_error;
};
