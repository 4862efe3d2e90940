#include "rawfilesend.h"

#include "filereason.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {

// Queued in the link: stopping is to be seen at once.
constexpr qint64 kMaxPending = 4096;
constexpr int kFullMs = 2; // until the queue is looked at again
// A line that is longer goes on after the next pause.
constexpr int kMaxLine = 4096;
constexpr int kMaxPortion = 64 * 1024;

} // namespace

RawFileSend::RawFileSend(QObject *parent)
    : QObject(parent)
    , m_timer(this)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &RawFileSend::step);
}

RawFileSend::~RawFileSend() = default;

bool RawFileSend::start(Link *link, const QStringList &files, const Pace &pace)
{
    if (isBusy() || !link->isOpen())
        return false;
    m_link = link;
    m_files = files;
    m_completed = 0;
    m_pace = pace;
    m_bytes = 0;
    m_reason.clear();
    m_log.clear();
    m_startUs = Link::nowUs();
    m_log.note(0, QStringLiteral("开始原始发送 %1个文件，每%2毫秒%3%4")
                      .arg(files.size())
                      .arg(pace.ms)
                      .arg(pace.count)
                      .arg(pace.unit == Pace::Lines ? QStringLiteral("行") : QStringLiteral("字节")));
    const auto checkLink = [this] {
        if (isBusy() && !m_link->isOpen())
            end(Ymodem::Error, QStringLiteral("串口已断开"));
    };
    connect(m_link, &Link::stateChanged, this, checkLink, Qt::QueuedConnection);
    m_timer.start(0);
    return true;
}

void RawFileSend::stop()
{
    if (isBusy())
        end(Ymodem::Abort, QStringLiteral("用户停止了传输"));
}

void RawFileSend::end(Ymodem::Status status, const QString &reason)
{
    m_timer.stop();
    m_file.close();
    m_reason = reason;
    m_log.note(elapsedMs(), reason.isEmpty() ? QStringLiteral("传输完成") : reason);
    m_link->disconnect(this);
    m_link = nullptr;
    emit ended(status);
}

// One portion; an end is one when everything has left.
void RawFileSend::step()
{
    if (m_link->pendingBytes() > (m_completed < m_files.size() ? kMaxPending : 0))
        return m_timer.start(kFullMs);
    if (m_completed >= m_files.size())
        return end(Ymodem::Finish, QString());
    if (!m_file.isOpen() && !openNext())
        return;
    const QByteArray bytes = nextPortion();
    if (bytes.isEmpty() && m_file.error() != QFile::NoError)
        return end(Ymodem::Error,
                   QStringLiteral("文件无法读取：%1，%2")
                       .arg(QDir::toNativeSeparators(m_file.fileName()), FileReason::of(m_file)));
    if (!bytes.isEmpty() && m_link->send(bytes) < bytes.size())
        return end(Ymodem::Error, m_link->isOpen() ? m_link->refusal() : QStringLiteral("串口已断开"));
    m_bytes += bytes.size();
    emit progressed(m_file.fileName());
    if (bytes.isEmpty() || m_file.atEnd()) {
        m_file.close();
        ++m_completed;
    }
    m_timer.start(m_pace.ms);
}

bool RawFileSend::openNext()
{
    const QString name = m_files.at(m_completed);
    m_file.setFileName(name);
    // Anything but a regular file could block or never end.
    if (!QFileInfo(name).isFile() || !m_file.open(QIODevice::ReadOnly)) {
        end(Ymodem::Error, QStringLiteral("文件无法读取：%1").arg(QDir::toNativeSeparators(name)));
        return false;
    }
    m_bytes = 0;
    m_log.note(elapsedMs(), QStringLiteral("文件 %1，%2字节").arg(name).arg(m_file.size()));
    emit fileStarted(name);
    return true;
}

QByteArray RawFileSend::nextPortion()
{
    if (m_pace.unit == Pace::Bytes)
        return m_file.read(std::min(m_pace.count, kMaxPortion));
    QByteArray lines;
    for (int i = 0; i < m_pace.count && lines.size() < kMaxPortion && !m_file.atEnd(); ++i)
        lines += m_file.readLine(kMaxLine);
    return lines;
}
