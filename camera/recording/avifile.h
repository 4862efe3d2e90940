#pragma once

// A video of JPEG pictures: AVI 1.0, Motion JPEG, one stream, an index at the end; all
// numbers little-endian (Microsoft, "AVI RIFF File Reference"). AVI knows one rate: it
// is the mean of all pictures. The caller owns the file, which is open for writing,
// unbuffered and empty.

#include <QByteArray>
#include <QSize>

#include <vector>

class QFileDevice;

class AviFile
{
public:
    static constexpr qint64 maxBytes = (1LL << 31) - 1; // what all players read

    explicit AviFile(QFileDevice *file, QSize size, qint64 limit = maxBytes);

    QSize size() const { return m_size; } // pixels, of each picture
    int frames() const { return static_cast<int>(m_index.size()); }
    bool hasRoomFor(qsizetype jpegBytes) const;

    // Picture after picture, with rising times in us. False where the device refuses;
    // the file then ends behind the picture before.
    bool add(const QByteArray &jpeg, qint64 timeUs);
    // Makes what has been written playable, if this program ends unexpectedly.
    bool writeHead();
    // Writes the index. False where there is no room for it; most players do without.
    bool finish();

private:
    bool write(const QByteArray &bytes);

    QFileDevice *m_file;
    QSize m_size;
    qint64 m_limit;
    qint64 m_end = 0;     // of the pictures
    qint64 m_riffEnd = 0; // of the file as its head says
    quint32 m_largest = 0;
    qint64 m_firstUs = 0;
    qint64 m_lastUs = 0;
    struct Entry
    {
        quint32 offset; // of the chunk, from "movi"
        quint32 bytes;  // of the picture
    };
    std::vector<Entry> m_index;
};
