#include "receivedfiles.h"

#include "bytespool.h"
#include "filereason.h"
#include "qtterminalwidget.h"
#include "safefile.h"
#include "textcodec.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextCodec>

#include <algorithm>

namespace {

constexpr qint64 kPieceBytes = 256 * 1024;
constexpr int kMaxStretchMs = 16; // between two looks at the event loop

// Lets timers and sockets run while a long file is written, but no input of the
// user.
class EventSlices
{
public:
    EventSlices() { m_clock.start(); }
    void runIfDue()
    {
        if (m_clock.elapsed() < kMaxStretchMs)
            return;
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        m_clock.start();
    }

private:
    QElapsedTimer m_clock;
};

// Shows what is pending for display at this moment; it belongs to the text.
void showQueued(QtTerminalWidget &terminal, EventSlices &events)
{
    qint64 pending = terminal.queuedBytes();
    for (qint64 due = pending; due > 0 && pending > 0;) {
        terminal.flushSlice();
        due -= pending - terminal.queuedBytes();
        events.runIfDue();
        pending = terminal.queuedBytes();
    }
}

bool failed(const QFileDevice &file, QString *error)
{
    *error = FileReason::of(file);
    if (error->isEmpty())
        *error = QStringLiteral("缓存文件无法读取");
    return false;
}

} // namespace

namespace ReceivedFiles {

bool saveText(QtTerminalWidget &terminal, const QString &fileName, int codecIndex, QString *error)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return failed(file, error);
    const std::unique_ptr<QTextEncoder> encoder(
        TextCodec::codec(codecIndex)->makeEncoder(QTextCodec::IgnoreHeader));
    EventSlices events;
    showQueued(terminal, events);
    QtTerminalWidget::Reader reader(terminal);
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
    const qint64 size = spool.size(); // what comes from now on isn't asked for
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
    const auto taken = [&suffixes](const QString &name) {
        return std::any_of(suffixes.begin(), suffixes.end(),
                           [&name](const QString &suffix) { return QFileInfo::exists(name + suffix); });
    };
    QString name = base;
    for (int number = 2;; ++number) {
        QFile first(name + suffixes.first());
        // Where no file can be made at all, writing tells why.
        if (!taken(name) && (first.open(QIODevice::WriteOnly | QIODevice::NewOnly) || !first.exists()))
            return name;
        name = QStringLiteral("%1_%2").arg(base).arg(number);
    }
}

} // namespace ReceivedFiles
