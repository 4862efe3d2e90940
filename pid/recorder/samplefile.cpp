#include "samplefile.h"

#include "filereason.h"

#include <QDir>
#include <QTemporaryFile>

// Unbuffered, so that a full disk is noticed at the write that it refuses.
class SampleFile::File : public QTemporaryFile
{
public:
    using QTemporaryFile::QTemporaryFile;
    bool openUnbuffered() { return open(QIODevice::ReadWrite | QIODevice::Unbuffered); }
};

SampleFile::SampleFile(const QString &folder)
    : m_folder(folder.isEmpty() ? QDir::tempPath() : folder)
{
}

SampleFile::~SampleFile() = default;

bool SampleFile::open()
{
    if (!m_file)
        m_file = std::make_unique<File>(m_folder + QStringLiteral("/korvex_pid_XXXXXX"));
    return m_file->isOpen() || m_file->openUnbuffered();
}

int SampleFile::write(const char *bytes)
{
    const int slot = m_free.isEmpty() ? m_slots : m_free.last();
    if (!open() || !m_file->seek(qint64(slot) * slotBytes) || m_file->write(bytes, slotBytes) != slotBytes) {
        m_error = FileReason::of(*m_file);
        return -1;
    }
    if (slot == m_slots)
        ++m_slots;
    else
        m_free.removeLast();
    return slot;
}

bool SampleFile::read(int slot, char *bytes) const
{
    return m_file && m_file->seek(qint64(slot) * slotBytes) && m_file->read(bytes, slotBytes) == slotBytes;
}

void SampleFile::release(int slot)
{
    m_free.append(slot);
}
