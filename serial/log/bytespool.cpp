#include "bytespool.h"

#include <QDebug>
#include <QDir>
#include <QTemporaryFile>

namespace {
constexpr int kPieceBytes = 64 * 1024;     // collected before they are written
constexpr int kCatchUpBytes = 1024 * 1024; // written at a time when the disk has room again
} // namespace

// Unbuffered: a byte that was handed over is the system's, and a full disk is
// noticed at the write that it hits. Where the system has files without a name,
// Qt gives it one only when it is asked for: after a crash nothing would be left.
class SpoolFile : public QTemporaryFile
{
public:
    using QTemporaryFile::QTemporaryFile;
    bool openUnbuffered()
    {
        return open(QIODevice::ReadWrite | QIODevice::Unbuffered) && !fileName().isEmpty();
    }
};

ByteSpool::ByteSpool(const QString &folder, const QString &stem, qint64 memoryBound)
    : m_folder(folder)
    , m_stem(stem)
    , m_memoryBound(memoryBound)
{
}

ByteSpool::~ByteSpool() = default;

bool ByteSpool::openFile()
{
    if (m_file)
        return m_file->isOpen();
    for (const QString &folder : {m_folder, QDir::tempPath()}) {
        m_file = std::make_unique<SpoolFile>(folder + QLatin1Char('/') + m_stem + QStringLiteral("_XXXXXX"));
        if (m_file->openUnbuffered())
            return true;
        qWarning() << "cannot make a spool file in" << folder << m_file->errorString();
    }
    return false;
}

qint64 ByteSpool::appendToFile(const char *bytes, qint64 size)
{
    if (!openFile() || (m_file->pos() != m_fileSize && !m_file->seek(m_fileSize)))
        return 0;
    qint64 written = 0;
    while (written < size) {
        const qint64 count = m_file->write(bytes + written, size - written);
        if (count <= 0)
            break;
        written += count;
    }
    m_fileSize += written;
    return written;
}

ByteSpool::State ByteSpool::flush()
{
    if (m_state == State::Incomplete || m_memory.isEmpty())
        return m_state;
    const int size = m_state == State::OnDisk ? m_memory.size() : qMin(m_memory.size(), kCatchUpBytes);
    m_memory.remove(0, static_cast<int>(appendToFile(m_memory.constData(), size)));
    if (m_memory.isEmpty())
        m_state = State::OnDisk;
    else if (m_state == State::OnDisk)
        refused();
    return m_state;
}

void ByteSpool::refused()
{
    qWarning() << "spool file takes no more:" << (m_file ? m_file->errorString() : QString());
    m_state = State::InMemory;
}

ByteSpool::State ByteSpool::append(const char *bytes, qint64 size)
{
    qint64 done = 0;
    if (m_state == State::InMemory)
        flush(); // the user may have made room
    if (m_state == State::OnDisk) {
        if (m_memory.size() + size < kPieceBytes) {
            m_memory.append(bytes, static_cast<int>(size));
            return m_state;
        }
        if (flush() == State::OnDisk) {
            done = appendToFile(bytes, size);
            if (done == size)
                return m_state;
            refused();
        }
    }
    const qint64 room = m_memoryBound - m_memory.size();
    const qint64 rest = size - done;
    if (rest > room)
        m_state = State::Incomplete;
    m_memory.append(bytes + done, static_cast<int>(qMin(rest, room)));
    return m_state;
}

QByteArray ByteSpool::read(qint64 offset, qint64 most, bool *failed) const
{
    if (failed)
        *failed = false;
    if (offset >= m_fileSize)
        return m_memory.mid(static_cast<int>(offset - m_fileSize), static_cast<int>(most));
    QByteArray bytes;
    if (m_file && m_file->seek(offset))
        bytes = m_file->read(qMin(most, m_fileSize - offset));
    if (bytes.isEmpty() && failed)
        *failed = true;
    return bytes;
}

void ByteSpool::clear()
{
    m_file.reset();
    m_fileSize = 0;
    m_memory.clear();
    m_state = State::OnDisk;
}
