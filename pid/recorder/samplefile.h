#pragma once

// Blocks of samples that memory has no room for: a temporary file of equal slots,
// which are reused. The file is made with the first block and removed with the
// object.

#include <QString>
#include <QVector>

#include <memory>

class SampleFile
{
public:
    static constexpr int slotBytes = 64 * 1024;

    // An empty folder stands for the system's folder of temporary files.
    explicit SampleFile(const QString &folder = {});
    ~SampleFile();
    Q_DISABLE_COPY_MOVE(SampleFile)

    // slotBytes bytes. The number of their slot; -1 where the disk refuses, see error().
    int write(const char *bytes);
    // False where they can't be read back.
    bool read(int slot, char *bytes) const;
    void release(int slot);

    const QString &error() const { return m_error; } // of the last write() that failed
    qint64 fileBytes() const { return qint64(m_slots) * slotBytes; }

private:
    class File;
    bool open();

    QString m_folder;
    std::unique_ptr<File> m_file;
    int m_slots = 0;
    QVector<int> m_free;
    QString m_error;
};
