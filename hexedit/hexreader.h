#pragma once

// Reads a file into memory, a slice at a time. Reading and not mapping: another
// program that cuts a mapped file would end ours.

#include "hexedit/bytestore.h"

#include <QFile>

class HexReader
{
public:
    // False where it is no ordinary file or can't be opened for reading.
    bool open(const QString &fileName);

    enum class State { Running, Done, Failed };
    State step();

    int permille() const;
    const ByteStore &bytes() const { return m_bytes; }

private:
    QFile m_file;
    ByteStore m_bytes;
};
