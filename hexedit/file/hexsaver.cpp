#include "hexsaver.h"

#include "disksync.h"
#include "fileaccess.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>
#include <QTemporaryFile>
#include <algorithm>
#include <utility>

namespace {

constexpr int kSlice = 4 << 20;
constexpr qint64 kMargin = 64 << 10; // directories and the file system's own

// The name of the copy until it is complete. A part of a file under the
// file's own name would look like the file, and be saved over the complete bytes.
QString partOf(const QString &fileName)
{
    return fileName + QStringLiteral(".~part");
}

// A file can be created there. The attributes are no answer: Windows marks the
// desktop as read-only for its own reasons, and they ignore access rights.
bool takesFiles(const QString &folder)
{
    QTemporaryFile probe(folder + QStringLiteral("/.~XXXXXX"));
    return probe.open();
}

// Some file systems report a failed write only when the file is closed.
bool closes(QFile &file)
{
    file.close();
    return file.error() == QFile::NoError;
}

std::filesystem::path pathOf(const QString &fileName)
{
    if constexpr (std::is_same_v<std::filesystem::path::value_type, wchar_t>)
        return fileName.toStdWString();
    else
        return QFile::encodeName(fileName).toStdString();
}

// Where the old file goes when its successor could not be written.
QString rescueNameOf(const QString &fileName, int number)
{
    const QString name = fileName + QStringLiteral(".~bak");
    return number == 0 ? name : name + QString::number(number);
}

QString freeRescueNameOf(const QString &fileName)
{
    int number = 0;
    while (QFileInfo::exists(rescueNameOf(fileName, number)))
        ++number;
    return rescueNameOf(fileName, number);
}

QString keptOld(const QString &target)
{
    const QString rescue = freeRescueNameOf(target);
    return QStringLiteral("原内容保留在：\n%1\n")
        .arg(QDir::toNativeSeparators(QFile::rename(target, rescue) ? rescue : target));
}

QString keptNew(const QString &temporary)
{
    return QStringLiteral("新内容完整保存在：\n%1\n请排除原因后再次保存；重新打开此文件时也可载入。")
        .arg(QDir::toNativeSeparators(temporary));
}

} // namespace

HexSaver::Disk HexSaver::realDisk()
{
    return {[](const QString &fileName) { return !DiskSync::flush(pathOf(fileName)); },
            [](const QString &folder) { return QStorageInfo(folder).bytesAvailable(); }};
}

HexSaver::HexSaver(const QString &fileName, std::unique_ptr<HexOutput> output, const Disk &disk)
    : m_output(std::move(output))
    , m_disk(disk)
    , m_target(targetOf(fileName))
    , m_temporary(temporaryOf(m_target))
    , m_part(partOf(m_target))
{
}

HexSaver::~HexSaver()
{
    if (mayStop())
        stop();
    if (m_flush)
        m_flush->wait();
    if (m_stage == Stage::Copy || m_stage == Stage::FlushCopy)
        m_part.remove();
}

QString HexSaver::targetOf(const QString &fileName)
{
    QString target = fileName;
    // A link to a file that is gone has no canonical path.
    for (int depth = 0; depth < 40 && QFileInfo(target).isSymLink(); ++depth)
        target = QFileInfo(target).symLinkTarget();
    const QString canonical = QFileInfo(target).canonicalFilePath();
    return canonical.isEmpty() ? target : canonical;
}

// See takesFiles(): opening a file must not write, and only POSIX's attributes count.
QString HexSaver::readOnlyReason(const QString &fileName)
{
    const QFileInfo file(targetOf(fileName));
    if (fileName.isEmpty() || !file.exists())
        return QString();
    if (!file.isWritable())
        return QStringLiteral("文件为只读");
#ifdef Q_OS_UNIX
    if (!QFileInfo(file.absolutePath()).isWritable())
        return QStringLiteral("文件夹不可写入");
#endif
    return QString();
}

QString HexSaver::temporaryOf(const QString &fileName)
{
    return fileName + QStringLiteral(".~tmp");
}

QString HexSaver::refusal() const
{
    const QFileInfo old(m_target);
    const QString folder = old.absolutePath();
    if (old.isSymLink() || (old.exists() && !old.isFile()))
        return QStringLiteral("目标不是普通文件");
    if (old.exists() && !old.isWritable())
        return QStringLiteral("文件为只读");
    if (!takesFiles(folder))
        return QStringLiteral("文件夹不可写入");
    qint64 freed = 0; // by what an earlier save left behind
    for (const QString &name : {m_temporary.fileName(), m_part.fileName()}) {
        const QFileInfo left(name);
        if (left.isSymLink() || (left.exists() && !left.isFile()))
            return QStringLiteral("临时文件的名称已被占用");
        freed += left.exists() ? left.size() : 0;
    }
    // The temporary file stands beside the old one, and then beside its copy.
    const qint64 oldSize = old.exists() ? old.size() : 0;
    const qint64 size = m_output->size();
    const qint64 available = m_disk.freeBytes(folder);
    if (available >= 0 && available + freed < std::max(size, 2 * size - oldSize) + kMargin)
        return QStringLiteral("磁盘空间不足");
    return QString();
}

QStringList HexSaver::leftoversOf(const QString &fileName)
{
    const QString target = targetOf(fileName);
    QStringList names;
    if (QFileInfo(temporaryOf(target)).isFile())
        names += temporaryOf(target);
    int next = 0;
    while (QFileInfo::exists(rescueNameOf(target, next)))
        ++next;
    if (next > 0)
        names += rescueNameOf(target, next - 1);
    return names;
}

void HexSaver::setLeftoverAside(const QString &fileName)
{
    const QString target = targetOf(fileName);
    if (QFileInfo(temporaryOf(target)).isFile())
        QFile::rename(temporaryOf(target), freeRescueNameOf(target));
}

HexSaver::State HexSaver::step()
{
    if (isFlushing())
        return State::Waiting;
    switch (m_stage) {
    case Stage::Begin:
        begin();
        break;
    case Stage::Write:
        writeSlice();
        break;
    case Stage::FlushTemporary:
        replaceOld();
        break;
    case Stage::Copy:
        copySlice();
        break;
    case Stage::FlushCopy:
        putCopyInPlace();
        break;
    case Stage::Done:
        break;
    }
    return m_stage == Stage::Done ? State::Done : State::Running;
}

int HexSaver::permille() const
{
    // All is written twice: into the temporary file and from there.
    return static_cast<int>((m_written + m_copied) * 500 / std::max<qint64>(m_output->size(), 1));
}

void HexSaver::stop()
{
    if (m_flush)
        m_flush->wait();
    if (m_temporary.isOpen() || m_stage == Stage::FlushTemporary) {
        m_temporary.close();
        m_temporary.remove();
    }
    m_outcome = Outcome();
    m_outcome.consequence = QStringLiteral("已停止保存，原文件未改动");
    m_stage = Stage::Done;
}

void HexSaver::begin()
{
    const QString kept =
        QStringLiteral("原文件未改动，修改仍在编辑器中。请排除原因后再次保存，或另存为其他文件。");
    const QString why = refusal();
    if (!why.isEmpty()) {
        fail(why, kept);
        return;
    }
    // What an earlier save could not copy is all that the disk has of the file:
    // it becomes the file that it was meant to be before it is written over.
    if (!QFileInfo::exists(m_target) && m_temporary.exists() &&
        !QFile::rename(m_temporary.fileName(), m_target)) {
        fail(QStringLiteral("无法使用上次保留的临时文件"), kept);
        return;
    }
    m_part.remove();
    if (!m_temporary.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        fail(QStringLiteral("无法创建临时文件"), kept);
        return;
    }
    m_replaces = QFileInfo::exists(m_target);
    m_access = FileAccess::of(m_target);
    if (m_replaces)
        m_temporary.setPermissions(QFile::permissions(m_target) | QFile::ReadOwner | QFile::WriteOwner);
    m_stage = Stage::Write;
}

void HexSaver::writeSlice()
{
    const QByteArray slice = m_output->next();
    if (m_temporary.write(slice) != slice.size()) {
        failWriting();
        return;
    }
    m_written += slice.size();
    if (!slice.isEmpty())
        return;
    const bool isComplete = m_output->isComplete() && m_temporary.size() == m_written;
    if (closes(m_temporary) && isComplete)
        startFlush(m_temporary.fileName(), Stage::FlushTemporary);
    else
        failWriting();
}

// The old file is removed by another name: the old bytes are all there is on
// the disk. What was written of the new ones is of no use, and may leave no
// room for a longer name.
void HexSaver::failWriting()
{
    m_temporary.close();
    m_temporary.remove();
    fail(QStringLiteral("写入失败，磁盘可能已满或已断开"),
         (m_replaces ? keptOld(m_target) : QString()) +
             QStringLiteral("新内容只在编辑器中。请排除原因后再次保存，或另存为其他文件。"));
}

void HexSaver::replaceOld()
{
    if (!m_flushed) {
        failWriting();
        return;
    }
    if (m_replaces && !QFile::remove(m_target)) {
        fail(QStringLiteral("无法替换原文件，可能正被其他程序使用"),
             QStringLiteral("原文件未改动。") + keptNew(m_temporary.fileName()));
        return;
    }
    m_stage = Stage::Copy;
    if (m_temporary.open(QIODevice::ReadOnly | QIODevice::Unbuffered) &&
        m_part.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        m_part.setPermissions(m_temporary.permissions());
    else
        failCopying();
}

void HexSaver::copySlice()
{
    const QByteArray slice = m_temporary.read(kSlice);
    if (m_part.write(slice) != slice.size()) {
        failCopying();
        return;
    }
    m_copied += slice.size();
    if (!slice.isEmpty())
        return;
    const bool isComplete = m_part.size() == m_temporary.size() && m_copied == m_written;
    if (closes(m_part) && isComplete)
        startFlush(m_part.fileName(), Stage::FlushCopy);
    else
        failCopying();
}

void HexSaver::failCopying()
{
    m_temporary.close();
    if (m_part.isOpen() || m_stage == Stage::FlushCopy) {
        m_part.close();
        m_part.remove();
    }
    if (m_replaces)
        m_access.applyTo(m_temporary.fileName());
    fail(QStringLiteral("复制失败，磁盘可能已满或已断开"),
         QStringLiteral("原文件已移除。") + keptNew(m_temporary.fileName()));
}

void HexSaver::putCopyInPlace()
{
    if (!m_flushed || !m_part.rename(m_target)) {
        failCopying();
        return;
    }
    m_temporary.close();
    const QString lost = m_replaces ? m_access.applyTo(m_target) : QString();
    m_outcome.inPlace = true;
    m_outcome.saved = m_temporary.remove();
    if (!m_outcome.saved)
        fail(QStringLiteral("临时文件无法删除"),
             QStringLiteral("文件已完整写入。多余的临时文件可以自行删除：\n") +
                 QDir::toNativeSeparators(m_temporary.fileName()));
    else if (!lost.isEmpty())
        m_outcome.consequence = QStringLiteral("文件已保存，但未能保留原来的%1").arg(lost);
    m_stage = Stage::Done;
}

void HexSaver::fail(const QString &reason, const QString &consequence)
{
    m_outcome.reason = reason;
    m_outcome.consequence = consequence;
    m_stage = Stage::Done;
}

// A slow disk needs seconds for a large file, and the system reports no
// progress: another thread waits for it.
void HexSaver::startFlush(const QString &fileName, Stage next)
{
    m_stage = next;
    m_flush.reset(QThread::create([this, fileName] { m_flushed = m_disk.flush(fileName); }));
    m_flush->start();
}

bool HexSaver::isFlushing()
{
    if (m_flush && !m_flush->wait(0))
        return true;
    m_flush.reset();
    return false;
}
