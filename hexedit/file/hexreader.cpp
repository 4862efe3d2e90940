#include "hexreader.h"

#include "filereason.h"
#include "hexsaver.h"

#include <QFileInfo>
#include <algorithm>
#include <new>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#endif

namespace {
constexpr int kBlock = 1 << 20; // bytes; a slow disk reads them in less than 50 ms
}

bool HexReader::open(const QString &fileName)
{
    return open(&m_file, fileName, &m_isOrdinary);
}

bool HexReader::open(QFile *file, const QString &fileName, bool *isOrdinary)
{
    // Where saving will put it. A shortcut on Windows is a link and also a file
    // of its own, whose bytes must not end up in the file that it leads to.
    const QString target = HexSaver::targetOf(fileName);
    // A pipe or a device may never end, or block.
    *isOrdinary = QFileInfo(target).isFile() || !QFileInfo::exists(target);
    if (!*isOrdinary)
        return false;
    constexpr QIODevice::OpenMode mode = QIODevice::ReadOnly | QIODevice::Unbuffered;
#ifdef Q_OS_UNIX
    // The kernel's log claims to be a file, and blocks until the next message.
    const int handle = ::open(QFile::encodeName(target).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (handle >= 0)
        return file->open(handle, mode, QFileDevice::AutoCloseHandle);
#endif
    file->setFileName(target);
    return file->open(mode); // or has the reason
}

QString HexReader::reason() const
{
    return m_isOrdinary ? FileReason::of(m_file) : QStringLiteral("不是普通文件");
}

HexReader::State HexReader::step(QByteArray *block)
{
    // The reported size may be wrong (/proc): the file ends where nothing is read.
    const qint64 left = m_file.size() - m_read;
    try {
        *block = QByteArray(static_cast<int>(std::clamp<qint64>(left, 1 << 16, kBlock)), Qt::Uninitialized);
        const qint64 count = m_file.read(block->data(), block->size());
        if (count < 0)
            return State::Failed;
        if (count == 0)
            return State::Done;
        if (count < block->size()) {
            block->truncate(static_cast<int>(count));
            block->squeeze();
        }
        m_read += count;
    } catch (const std::bad_alloc &) {
        return State::OutOfMemory;
    }
    return State::Running;
}

int HexReader::permille() const
{
    return static_cast<int>(std::min<qint64>(1000, m_read * 1000 / std::max<qint64>(m_file.size(), 1)));
}
