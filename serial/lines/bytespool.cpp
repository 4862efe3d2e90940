#include "bytespool.h"

#include "runmark.h"

#include <QDebug>
#include <QDir>
#include <QTemporaryFile>

namespace {
constexpr int kPieceBytes = 64 * 1024;     // collected before they are written
constexpr int kCatchUpBytes = 1024 * 1024; // written at a time when the disk has room again
} // namespace

// Unbuffered, so that a full disk is noticed at the write that it refuses. Where
// the system has files without a name, Qt makes the name when it is asked for:
// without one, a crash would leave no file.
class SpoolFile : public QTemporaryFile
{
public:
    using QTemporaryFile::QTemporaryFile;
    bool openUnbuffered()
    {
        return open(QIODevice::ReadWrite | QIODevice::Unbuffered) && !fileName().isEmpty();
    }
};

ByteSpool::ByteSpool(const QString &folder, const QString &stem, int maxMemory)
    : m_folder(folder)
    , m_stem(stem)
    , m_maxMemory(maxMemory)
{
}

ByteSpool::~ByteSpool() = default;

bool ByteSpool::openFile()
{
    if (m_file)
        return m_file->isOpen();
    for (const QString &folder : {m_folder, QDir::tempPath()}) {
        m_file = std::make_unique<SpoolFile>(folder + QLatin1Char('/') + m_stem + QLatin1Char('_') +
                                             RunMark::text() + QStringLiteral("_XXXXXX"));
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
    if (m_state == State::Incomplete || m_memory.size() == 0)
        return m_state;
    const int size = m_state == State::OnDisk ? m_memory.size() : qMin(m_memory.size(), kCatchUpBytes);
    m_memory.drop(appendToFile(m_memory.front(), size));
    m_sinceRefusal = 0;
    if (m_memory.size() == 0)
        m_state = State::OnDisk;
    else if (m_state == State::OnDisk)
        handleRefusal();
    return m_state;
}

void ByteSpool::handleRefusal()
{
    qWarning() << "cannot write the spool file:" << (m_file ? m_file->errorString() : QString());
    m_state = State::InMemory;
    m_sinceRefusal = 0;
}

ByteSpool::State ByteSpool::append(const char *bytes, qint64 size)
{
    qint64 done = 0;
    if (m_state == State::InMemory && (m_sinceRefusal += size) >= kPieceBytes)
        flush(); // there may be room again
    if (m_state == State::OnDisk) {
        if (m_memory.size() + size < kPieceBytes) {
            m_memory.append(bytes, static_cast<int>(size));
            return m_state;
        }
        if (flush() == State::OnDisk) {
            done = appendToFile(bytes, size);
            if (done == size)
                return m_state;
            handleRefusal();
        }
    }
    const qint64 room = m_maxMemory - m_memory.size();
    if (size - done > room)
        m_state = State::Incomplete;
    m_memory.append(bytes + done, static_cast<int>(qMin(size - done, room)));
    return m_state;
}

QByteArray ByteSpool::read(qint64 offset, qint64 maxBytes, bool *failed) const
{
    if (failed)
        *failed = false;
    QByteArray bytes;
    if (offset >= m_fileSize) {
        const qint64 begin = qMin<qint64>(offset - m_fileSize, m_memory.size());
        bytes.append(m_memory.front() + begin, static_cast<int>(qMin(maxBytes, m_memory.size() - begin)));
        return bytes;
    }
    if (m_file && m_file->seek(offset))
        bytes = m_file->read(qMin(maxBytes, m_fileSize - offset));
    if (bytes.isEmpty() && failed)
        *failed = true;
    return bytes;
}

void ByteSpool::chop(qint64 bytes)
{
    const int inMemory = static_cast<int>(qMin<qint64>(bytes, m_memory.size()));
    m_memory.dropBack(inMemory);
    m_fileSize = qMax<qint64>(0, m_fileSize - (bytes - inMemory)); // written over by what follows
}

void ByteSpool::clear()
{
    m_file.reset();
    m_fileSize = 0;
    m_memory.clear();
    m_state = State::OnDisk;
}
