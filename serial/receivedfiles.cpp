#include "serial/receivedfiles.h"

#include "app/safefile.h"
#include "app/textcodec.h"
#include "serial/bytespool.h"
#include "serial/qtterminalwidget.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextCodec>

#include <algorithm>

namespace {

constexpr qint64 kPieceBytes = 256 * 1024;
constexpr int kLongestStretchMs = 16; // between two looks at the event loop

// Lets timers and sockets run while a long file is written; the user's own
// input waits.
class Breather
{
public:
    Breather() { m_clock.start(); }
    void breathe()
    {
        if (m_clock.elapsed() < kLongestStretchMs)
            return;
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        m_clock.start();
    }

private:
    QElapsedTimer m_clock;
};

// Shows what waits to be shown at this moment; it belongs to the text.
void showQueued(QtTerminalWidget &terminal, Breather &breather)
{
    qint64 waiting = terminal.queuedBytes();
    for (qint64 due = waiting; due > 0 && waiting > 0;) {
        terminal.flushSlice();
        due -= waiting - terminal.queuedBytes();
        breather.breathe();
        waiting = terminal.queuedBytes();
    }
}

} // namespace

namespace ReceivedFiles {

bool saveText(QtTerminalWidget &terminal, const QString &fileName, int codecIndex)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const std::unique_ptr<QTextEncoder> encoder(
        TextCodec::codec(codecIndex)->makeEncoder(QTextCodec::IgnoreHeader));
    Breather breather;
    showQueued(terminal, breather);
    QtTerminalWidget::Reader reader(terminal);
    for (QString text = reader.next(); !text.isEmpty(); text = reader.next()) {
        const QByteArray bytes = encoder->fromUnicode(text);
        if (file.write(bytes) != bytes.size())
            return false;
        breather.breathe();
    }
    return !reader.failed() && SafeFile::commit(file);
}

bool saveBytes(const ByteSpool &spool, const QString &fileName)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    Breather breather;
    const qint64 size = spool.size(); // what comes from now on isn't asked for
    for (qint64 offset = 0; offset < size;) {
        bool failed = false;
        const QByteArray bytes = spool.read(offset, qMin(kPieceBytes, size - offset), &failed);
        if (failed || bytes.isEmpty() || file.write(bytes) != bytes.size())
            return false;
        offset += bytes.size();
        breather.breathe();
    }
    return SafeFile::commit(file);
}

QString datedName(const QString &folder, const QStringList &suffixes)
{
    const QString base = folder + QStringLiteral("/recv_") +
                         QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd_hhmmss"));
    const auto taken = [&suffixes](const QString &name) {
        return std::any_of(suffixes.begin(), suffixes.end(),
                           [&name](const QString &suffix) { return QFileInfo::exists(name + suffix); });
    };
    QString name = base;
    for (int number = 2; taken(name); ++number)
        name = QStringLiteral("%1_%2").arg(base).arg(number);
    return name;
}

} // namespace ReceivedFiles
