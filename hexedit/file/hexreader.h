#pragma once

// Reads a file block by block, so that the first ones are shown while the rest
// is being read. It does not map the file: another program that truncates a
// mapped file would crash ours. Owns the open file.

#include <QByteArray>
#include <QFile>

class HexReader
{
public:
    // False where it is no ordinary file or can't be opened for reading.
    bool open(const QString &fileName);
    static bool open(QFile *file, const QString &fileName, bool *isOrdinary);
    QString reason() const; // of the last failure, for the user

    enum class State { Running, Done, Failed, OutOfMemory };
    // Hands out the next bytes, while it is running.
    State step(QByteArray *block);

    int permille() const;

private:
    QFile m_file;
    qint64 m_read = 0;
    bool m_isOrdinary = true;
};
