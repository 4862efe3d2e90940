#include "filereceive.h"

#include "filereason.h"
#include "receivedname.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>

#include <algorithm>
#include <utility>

namespace {

constexpr int kReleaseMs = 100; // between the two reports of an end
constexpr qint64 kMegabyte = 1024LL * 1024;
constexpr qint64 kReservedBytes = 16 * kMegabyte;
constexpr qint64 kCheckedBytes = kMegabyte; // between two looks at the disk
constexpr int kMaxNumber = 9999;

// Also by a link that leads nowhere.
bool isTaken(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

QString endReason(ModemReceiver::End end)
{
    switch (end) {
    case ModemReceiver::End::SenderCancelled:
        return QStringLiteral("发送端取消了传输");
    case ModemReceiver::End::NoSender:
        return QStringLiteral("发送端没有开始发送");
    case ModemReceiver::End::Silent:
        return QStringLiteral("发送端没有继续发送");
    case ModemReceiver::End::TooManyErrors:
        return QStringLiteral("数据包反复出错");
    case ModemReceiver::End::OutOfStep:
        return QStringLiteral("数据包序号不连续");
    case ModemReceiver::End::OtherProtocol:
        return QStringLiteral("发送端使用的是另一种协议，请检查“传输协议”");
    case ModemReceiver::End::TooLong:
        return QStringLiteral("发送的数据多于声明的大小");
    default:
        return QString();
    }
}

Ymodem::Status statusOf(ModemReceiver::End end)
{
    switch (end) {
    case ModemReceiver::End::Finished:
        return Ymodem::Finish;
    case ModemReceiver::End::SenderCancelled:
        return Ymodem::Abort;
    case ModemReceiver::End::NoSender:
        return Ymodem::Timeout;
    default:
        return Ymodem::Error;
    }
}

QString faultText(ModemReceiver::Fault fault)
{
    switch (fault) {
    case ModemReceiver::Fault::BadHeader:
        return QStringLiteral("包头错误");
    case ModemReceiver::Fault::BadCheck:
        return QStringLiteral("校验错误");
    case ModemReceiver::Fault::Incomplete:
        return QStringLiteral("数据包不完整");
    case ModemReceiver::Fault::Silence:
        return QStringLiteral("没有收到数据");
    default:
        return QStringLiteral("重复的数据包");
    }
}

} // namespace

FileReceive::FileReceive(QObject *parent)
    : QObject(parent)
    , m_receiver(this)
    , m_due(this)
    , m_release(this)
    , m_nowMs([] { return Link::nowUs() / 1000; })
{
    m_due.setSingleShot(true);
    m_release.setSingleShot(true);
    m_release.setInterval(kReleaseMs);
    connect(&m_due, &QTimer::timeout, this, &FileReceive::handleDue);
    connect(&m_release, &QTimer::timeout, this, &FileReceive::release);
}

FileReceive::~FileReceive()
{
    blockSignals(true);
    m_receiver.cancel();
    leavePart();
}

// ---- start and end

bool FileReceive::start(Link *link, const ModemReceiver::Settings &settings, const Target &target)
{
    if (isBusy())
        return false;
    m_target = target;
    m_totalBytes = 0;
    m_bytes = 0;
    m_size = -1;
    m_name.clear();
    m_files.clear();
    m_incomplete.clear();
    m_refusal.clear();
    m_unused.clear();
    m_reason.clear();
    m_log.clear();
    m_startMs = m_nowMs();
    m_log.note(0, QStringLiteral("开始接收，保存到 %1").arg(QDir::toNativeSeparators(target.folder)));
    if (!link->isOpen())
        m_reason = QStringLiteral("串口已断开");
    else if (!QFileInfo(target.folder).isDir())
        m_reason = QStringLiteral("接收文件夹不存在：%1").arg(QDir::toNativeSeparators(target.folder));
    if (!m_reason.isEmpty()) {
        m_log.note(0, m_reason);
        return false;
    }
    m_link = link;
    connect(m_link, &Link::received, this, &FileReceive::receive);
    // Queued: they may come from within a reply.
    connect(
        m_link, &Link::dropped, this, [this] { handleLinkLost(); }, Qt::QueuedConnection);
    connect(
        m_link, &Link::stateChanged, this, [this] { handleLinkLost(); }, Qt::QueuedConnection);
    m_receiver.start(settings, m_nowMs());
    schedule();
    return true;
}

void FileReceive::stop()
{
    if (!m_receiver.isRunning())
        return;
    m_receiver.cancel();
    end(Ymodem::Abort, QStringLiteral("用户停止了传输"));
    reportEnd();
}

void FileReceive::handleLinkLost()
{
    if (!m_receiver.isRunning())
        return;
    m_receiver.cancel();
    end(Ymodem::Error, QStringLiteral("串口已断开"));
    reportEnd();
}

void FileReceive::handleEnd(ModemReceiver::End end)
{
    this->end(statusOf(end), end == ModemReceiver::End::Refused ? m_refusal : endReason(end));
}

void FileReceive::end(Ymodem::Status status, const QString &reason)
{
    m_due.stop();
    leavePart();
    m_status = status;
    if (m_reason.isEmpty()) // not that of a file before
        m_reason = reason;
    m_log.note(elapsedMs(), reason.isEmpty() ? QStringLiteral("传输完成") : reason);
    m_isEndDue = true;
}

// When the receiver has returned: what came behind the end is known then.
void FileReceive::reportEnd()
{
    if (!std::exchange(m_isEndDue, false))
        return;
    m_link->disconnect(this);
    m_release.start();
    emit ended(m_status);
}

void FileReceive::release()
{
    m_link = nullptr;
    emit ended(m_status);
}

// ---- bytes

void FileReceive::receive(const QByteArray &bytes)
{
    if (!m_receiver.isRunning()) { // behind the end
        m_unused += bytes;
        return;
    }
    m_log.received(elapsedMs(), bytes);
    const int used = m_receiver.receive(bytes, m_nowMs());
    m_unused += bytes.mid(used);
    schedule();
    reportEnd();
}

void FileReceive::reply(const QByteArray &bytes)
{
    m_log.sent(elapsedMs(), bytes);
    m_link->send(bytes);
}

void FileReceive::passOn(const QByteArray &bytes)
{
    emit passedOn(bytes);
}

void FileReceive::noteFault(ModemReceiver::Fault fault)
{
    m_log.note(elapsedMs(), faultText(fault));
}

// The timer is not started again for a later time: it finds out when it fires.
void FileReceive::schedule()
{
    if (!m_receiver.isRunning())
        return;
    if (m_due.isActive() && m_timerMs <= m_receiver.dueMs())
        return;
    m_timerMs = m_receiver.dueMs();
    m_due.start(static_cast<int>(std::max<qint64>(m_timerMs - m_nowMs(), 0)));
}

void FileReceive::handleDue()
{
    m_receiver.timeOut(m_nowMs());
    schedule();
    reportEnd();
}

// ---- files

bool FileReceive::refuse(const QString &reason)
{
    m_refusal = reason;
    return false;
}

QString FileReceive::overLimit(const QString &name) const
{
    return QStringLiteral("文件超过接收上限%1 MB，已拒绝：%2").arg(m_target.maxBytes / kMegabyte).arg(name);
}

bool FileReceive::hasRoom(qint64 bytes)
{
    const QStorageInfo disk(m_target.folder);
    return !disk.isValid() || disk.bytesAvailable() < 0 || bytes <= disk.bytesAvailable() - kReservedBytes;
}

bool FileReceive::beginFile(const QByteArray &name, qint64 size)
{
    QString plain = ReceivedName::plain(name);
    if (plain.isEmpty())
        plain = m_target.defaultName;
    if (m_files.size() + m_incomplete.size() >= maxFiles)
        return refuse(QStringLiteral("文件超过%1个，已拒绝").arg(maxFiles));
    if (size > m_target.maxBytes - m_totalBytes)
        return refuse(overLimit(plain));
    if (!hasRoom(std::max<qint64>(size, 0)))
        return refuse(QStringLiteral("磁盘空间不足，已拒绝：%1").arg(plain));
    m_size = size;
    m_bytes = 0;
    m_uncheckedBytes = 0;
    if (!openPart(plain))
        return false;
    m_log.note(elapsedMs(), size < 0 ? QStringLiteral("文件 %1").arg(m_name)
                                     : QStringLiteral("文件 %1，%2字节").arg(m_name).arg(size));
    emit fileStarted(m_name);
    return true;
}

// Under a name of which neither a file nor a part exists.
bool FileReceive::openPart(const QString &name)
{
    const QDir folder(m_target.folder);
    for (int number = 1; number <= kMaxNumber; ++number) {
        m_name = ReceivedName::numbered(name, number);
        const QString part = folder.filePath(ReceivedName::incomplete(m_name));
        if (isTaken(folder.filePath(m_name)) || isTaken(part))
            continue;
        m_file.setFileName(part);
        if (m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            return true;
        return refuse(QStringLiteral("文件无法保存：%1，%2")
                          .arg(QDir::toNativeSeparators(part), FileReason::of(m_file)));
    }
    return refuse(QStringLiteral("同名文件过多：%1").arg(name));
}

bool FileReceive::storeBytes(const char *bytes, int count)
{
    if (m_totalBytes + count > m_target.maxBytes)
        return refuse(overLimit(m_name));
    m_uncheckedBytes += count;
    if (m_uncheckedBytes >= kCheckedBytes) {
        m_uncheckedBytes = 0;
        if (!hasRoom(0))
            return refuse(QStringLiteral("磁盘空间不足，已停止：%1").arg(m_name));
    }
    if (m_file.write(bytes, count) != count)
        return refuse(QStringLiteral("文件无法写入：%1，%2").arg(m_name, FileReason::of(m_file)));
    m_bytes += count;
    m_totalBytes += count;
    emit progressed(m_name);
    return true;
}

bool FileReceive::endFile(bool isComplete)
{
    if (!m_file.flush())
        return refuse(QStringLiteral("文件无法写入：%1，%2").arg(m_name, FileReason::of(m_file)));
    if (!isComplete) {
        m_reason = QStringLiteral("收到的数据少于声明的大小：%1").arg(m_name);
        m_log.note(elapsedMs(), m_reason);
        leavePart();
        return true;
    }
    return keepPart();
}

// A file of that name may have come up meanwhile: it stays.
bool FileReceive::keepPart()
{
    m_file.close();
    const QDir folder(m_target.folder);
    for (int number = 1; number <= kMaxNumber; ++number) {
        const QString path = folder.filePath(ReceivedName::numbered(m_name, number));
        if (isTaken(path))
            continue;
        if (!m_file.rename(path))
            break;
        m_files.append(path);
        m_file.setFileName(QString());
        m_log.note(elapsedMs(), QStringLiteral("已保存 %1").arg(QDir::toNativeSeparators(path)));
        emit fileReceived(path);
        return true;
    }
    return refuse(QStringLiteral("文件无法改名：%1").arg(QDir::toNativeSeparators(m_file.fileName())));
}

// What was received stays; a part without a byte is none.
void FileReceive::leavePart()
{
    if (m_file.fileName().isEmpty())
        return;
    m_file.close();
    if (m_bytes == 0)
        m_file.remove();
    else
        m_incomplete.append(m_file.fileName());
    m_file.setFileName(QString());
}
