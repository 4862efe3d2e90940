#include "safefile.h"

#include "filereason.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace {

void reportFailure(const QSaveFile &file, QString *error)
{
    qWarning().noquote() << "cannot write" << file.fileName() << file.errorString();
    if (error)
        *error = FileReason::of(file);
}

} // namespace

namespace SafeFile {

bool commit(QSaveFile &file, QString *error)
{
    if (file.flush() && file.error() == QFileDevice::NoError && file.commit())
        return true;
    reportFailure(file, error);
    if (error && error->isEmpty())
        *error = QStringLiteral("磁盘空间不足或无法写入");
    file.cancelWriting();
    return false;
}

bool write(const QString &fileName, const QByteArray &content, QString *error)
{
    QDir().mkpath(QFileInfo(fileName).path());
    QSaveFile file(fileName);
    if (file.open(QIODevice::WriteOnly) && file.write(content) == content.size())
        return commit(file, error);
    reportFailure(file, error);
    return false;
}

bool read(const QString &fileName, qint64 maxBytes, QByteArray *content, QString *error)
{
    QFile file(fileName);
    if (!file.exists())
        return true;
    if (!QFileInfo(fileName).isFile()) { // opening a named pipe blocks
        *error = QStringLiteral("不是普通文件");
        return false;
    }
    QByteArray bytes;
    if (file.open(QIODevice::ReadOnly)) // not beyond its size: reading the kernel's log would block
        bytes = file.read(qMin(file.size(), maxBytes + 1));
    *error = bytes.size() > maxBytes ? QStringLiteral("文件过大") : FileReason::of(file);
    if (!error->isEmpty())
        return false;
    *content = bytes.isNull() ? QByteArray("") : bytes;
    return true;
}

} // namespace SafeFile
