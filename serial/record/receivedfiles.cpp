#include "receivedfiles.h"

#include "bytespool.h"
#include "eventslices.h"
#include "filereason.h"
#include "receivedtext.h"
#include "safefile.h"
#include "textcodec.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextCodec>

#include <algorithm>

namespace {

constexpr qint64 kPieceBytes = 256 * 1024;

bool failed(const QFileDevice &file, QString *error)
{
    *error = FileReason::of(file);
    if (error->isEmpty())
        *error = QStringLiteral("缓存文件无法读取");
    return false;
}

} // namespace

namespace ReceivedFiles {

bool saveText(const ReceivedText &received, const QString &fileName, int codecIndex, QString *error)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return failed(file, error);
    const std::unique_ptr<QTextEncoder> encoder(
        TextCodec::codec(codecIndex)->makeEncoder(QTextCodec::IgnoreHeader));
    EventSlices events;
    ReceivedText::Reader reader(received);
    for (QString text = reader.next(); !text.isEmpty(); text = reader.next()) {
        const QByteArray bytes = encoder->fromUnicode(text);
        if (file.write(bytes) != bytes.size())
            return failed(file, error);
        events.runIfDue();
    }
    return reader.failed() ? failed(file, error) : SafeFile::commit(file, error);
}

bool saveBytes(const ByteSpool &spool, const QString &fileName, QString *error)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return failed(file, error);
    EventSlices events;
    const qint64 size = spool.size(); // what follows is not part of it
    for (qint64 offset = 0; offset < size;) {
        bool unreadable = false;
        const QByteArray bytes = spool.read(offset, qMin(kPieceBytes, size - offset), &unreadable);
        if (unreadable || bytes.isEmpty() || file.write(bytes) != bytes.size())
            return failed(file, error);
        offset += bytes.size();
        events.runIfDue();
    }
    return SafeFile::commit(file, error);
}

QString reserveDatedName(const QString &folder, const QStringList &suffixes)
{
    const QString base = folder + QStringLiteral("/recv_") +
                         QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd_hhmmss"));
    const auto exists = [&suffixes](const QString &name) {
        return std::any_of(suffixes.begin(), suffixes.end(),
                           [&name](const QString &suffix) { return QFileInfo::exists(name + suffix); });
    };
    QString name = base;
    for (int number = 2;; ++number) {
        QFile first(name + suffixes.first());
        // Where no file can be made at all, writing reports why.
        if (!exists(name) && (first.open(QIODevice::WriteOnly | QIODevice::NewOnly) || !first.exists()))
            return name;
        name = QStringLiteral("%1_%2").arg(base).arg(number);
    }
}

} // namespace ReceivedFiles
