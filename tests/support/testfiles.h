#pragma once

// Files and their bytes, as tests of every folder need them.

#include <QByteArray>
#include <QFile>
#include <QString>

// "(no file)" where it cannot be read.
inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// Bytes of all values in an irregular order; another seed, other bytes.
inline QByteArray patternBytes(int count, quint32 seed = 1)
{
    QByteArray bytes(count, '\0');
    for (char &byte : bytes) {
        seed = seed * 1664525U + 1013904223U;
        byte = static_cast<char>(seed >> 24);
    }
    return bytes;
}
