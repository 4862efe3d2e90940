#include "hexsaver.h"

#include "disksync.h"
#include "fileaccess.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>
#include <QTemporaryFile>
#include <QThread>
#include <algorithm>
#include <memory>

namespace {

constexpr int kSlice = 4 << 20;
constexpr int kFrameMs = 16;
constexpr qint64 kMargin = 64 << 10; // directories and the file system's own

// What the copy is called until it is whole. A part of a file under the file's
// own name would be taken for the file, and saved over the whole bytes.
QString partOf(const QString &fileName)
{
    return fileName + QStringLiteral(".~part");
}

// A file can be made there. Attributes don't tell: Windows marks the desktop
// as read-only for reasons of its own, and says nothing of access rights.
bool takesFiles(const QString &folder)
{
    QTemporaryFile probe(folder + QStringLiteral("/.~XXXXXX"));
    return probe.open();
}

// Some file systems report only now that they couldn't keep what was written.
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

HexSaver::HexSaver()
    : pause([](qint64) {})
    , flush([this](const QString &fileName) { return flushMeanwhile(fileName); })
    , freeBytes([](const QString &folder) { return QStorageInfo(folder).bytesAvailable(); })
    , copy([this](const QString &from, const QString &to) { return copySlices(from, to); })
{
}

// A slow disk takes seconds for a large file, and the system does not say how
// far it is: another thread waits for it.
bool HexSaver::flushMeanwhile(const QString &fileName) const
{
    std::error_code error = std::make_error_code(std::errc::io_error);
    const std::unique_ptr<QThread> waiting(
        QThread::create([&error, path = pathOf(fileName)] { error = DiskSync::flush(path); }));
    waiting->start();
    while (!waiting->wait(kFrameMs))
        pause(0);
    return !error;
}

bool HexSaver::copySlices(const QString &from, const QString &to) const
{
    QFile source(from);
    QFile part(partOf(to));
    if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ||
        !part.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        return false;
    part.setPermissions(source.permissions());
    QByteArray slice(kSlice, Qt::Uninitialized);
    qint64 count = 0;
    while ((count = source.read(slice.data(), slice.size())) > 0) {
        if (part.write(slice.constData(), count) != count) {
            count = -1;
            break;
        }
        pause(count);
    }
    const bool whole = count == 0 && part.size() == source.size();
    if (closes(part) && whole && flush(part.fileName()) && part.rename(to))
        return true;
    part.remove();
    return false;
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

QString HexSaver::temporaryOf(const QString &fileName)
{
    return fileName + QStringLiteral(".~tmp");
}

QString HexSaver::refusal(const QString &target, qint64 size) const
{
    const QFileInfo old(target);
    const QString folder = old.absolutePath();
    if (old.isSymLink() || (old.exists() && !old.isFile()))
        return QStringLiteral("目标不是普通文件");
    if (old.exists() && !old.isWritable())
        return QStringLiteral("文件为只读");
    if (!takesFiles(folder))
        return QStringLiteral("文件夹不可写入");
    qint64 freed = 0; // by what an earlier save left behind
    for (const QString &name : {temporaryOf(target), partOf(target)}) {
        const QFileInfo left(name);
        if (left.isSymLink() || (left.exists() && !left.isFile()))
            return QStringLiteral("临时文件的名称已被占用");
        freed += left.exists() ? left.size() : 0;
    }
    // The temporary file stands beside the old one, and then beside its copy.
    const qint64 oldSize = old.exists() ? old.size() : 0;
    const qint64 available = freeBytes(folder);
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

HexSaver::Outcome HexSaver::save(const QString &fileName, qint64 size,
                                 const std::function<bool(QIODevice &)> &write) const
{
    Outcome outcome;
    const QString target = targetOf(fileName);
    outcome.reason = refusal(target, size);
    outcome.consequence =
        QStringLiteral("原文件未改动，修改仍在编辑器中。请排除原因后再次保存，或另存为其他文件。");
    if (!outcome.reason.isEmpty())
        return outcome;
    // What an earlier save could not copy is all that the disk has of the file:
    // it becomes the file that it was meant to be before it is written over.
    if (!QFileInfo::exists(target) && QFileInfo::exists(temporaryOf(target)) &&
        !QFile::rename(temporaryOf(target), target)) {
        outcome.reason = QStringLiteral("无法使用上次保留的临时文件");
        return outcome;
    }
    QFile::remove(partOf(target));
    QFile temporary(temporaryOf(target));
    if (!temporary.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        outcome.reason = QStringLiteral("无法创建临时文件");
        return outcome;
    }
    const bool replaces = QFileInfo::exists(target);
    const FileAccess access = FileAccess::of(target);
    if (replaces)
        temporary.setPermissions(QFile::permissions(target) | QFile::ReadOwner | QFile::WriteOwner);
    const bool written = write(temporary) && temporary.size() == size;
    if (!closes(temporary) || !written || !flush(temporary.fileName())) {
        // The old file is removed by another name: the old bytes are all there is
        // on the disk. What was written of the new ones is of no use, and may
        // leave no room for a longer name.
        temporary.remove();
        outcome.reason = QStringLiteral("写入失败，磁盘可能已满或已断开");
        outcome.consequence = QStringLiteral("新内容只在编辑器中。请排除原因后再次保存，或另存为其他文件。");
        if (replaces)
            outcome.consequence.prepend(keptOld(target));
        return outcome;
    }
    if (replaces && !QFile::remove(target)) {
        outcome.reason = QStringLiteral("无法替换原文件，可能正被其他程序使用");
        outcome.consequence = QStringLiteral("原文件未改动。") + keptNew(temporary.fileName());
        return outcome;
    }
    if (!copy(temporary.fileName(), target)) {
        if (replaces)
            access.giveTo(temporary.fileName());
        outcome.reason = QStringLiteral("复制失败，磁盘可能已满或已断开");
        outcome.consequence = QStringLiteral("原文件已移除。") + keptNew(temporary.fileName());
        return outcome;
    }
    const QString lost = replaces ? access.giveTo(target) : QString();
    outcome.consequence =
        lost.isEmpty() ? QString() : QStringLiteral("文件已保存，但未能保留原来的%1").arg(lost);
    outcome.inPlace = true;
    outcome.saved = temporary.remove();
    if (!outcome.saved) {
        outcome.reason = QStringLiteral("临时文件无法删除");
        outcome.consequence = QStringLiteral("文件已完整写入。多余的临时文件可以自行删除：\n") +
                              QDir::toNativeSeparators(temporary.fileName());
    }
    return outcome;
}
