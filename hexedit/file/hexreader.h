#pragma once

// Reads a file block by block, so that what has come can be shown while the
// rest is on its way. Reading and not mapping: another program that cuts a
// mapped file would end ours.

#include <QByteArray>
#include <QFile>

class HexReader
{
public:
    // False where it is no ordinary file or can't be opened for reading.
    bool open(const QString &fileName);
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
