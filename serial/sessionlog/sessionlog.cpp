#include "sessionlog.h"

#include "textcodec.h"

#include <QFileInfo>

#include <utility>

namespace {

constexpr int kPollMs = 250;
constexpr int kMaxEndMs = 3000;

QByteArray textOf(const Link *link, quint64 id)
{
    const QVector<Peer> peers = link->peers();
    for (const Peer &peer : peers)
        if (peer.id == id)
            return peer.text().toLatin1();
    return {};
}

} // namespace

SessionLog::SessionLog(QObject *parent)
    : QObject(parent)
    , m_poll(this)
{
    m_poll.setInterval(kPollMs);
    connect(&m_poll, &QTimer::timeout, this, &SessionLog::poll);
}

// Bytes that the links report until their end were recorded before.
SessionLog::~SessionLog()
{
    if (!m_writer)
        return;
    m_writer->finish();
    m_writer->waitForFinished(kMaxEndMs);
}

void SessionLog::watch(Link *link, const std::function<QString()> &name)
{
    connect(link, &Link::received, this, [this](const QByteArray &bytes, qint64 arrivalUs, const Peer &from) {
        if (isOn())
            add(LogForm::In, arrivalUs, bytes, from.text().toLatin1());
    });
    connect(link, &Link::sent, this, [this, link](const QByteArray &bytes, qint64 timeUs, quint64 peer) {
        if (isOn())
            add(LogForm::Out, timeUs, bytes, textOf(link, peer));
    });
    connect(link, &Link::peerJoined, this, [this](const Peer &peer) {
        if (peer.id != 0)
            note(peer.text() + QStringLiteral(" 已连接"));
    });
    connect(link, &Link::peerLeft, this, [this](const Peer &peer) {
        if (peer.id != 0)
            note(peer.text() + QStringLiteral(" 已断开"));
    });
    connect(link, &Link::dropped, this,
            [this](qint64 bytes) { note(QStringLiteral("%1 字节未能发出").arg(bytes)); });
    connect(link, &Link::stateChanged, this, [this, link, name] { handleState(link, name); });
}

void SessionLog::handleState(const Link *link, const std::function<QString()> &name)
{
    if (link->state() == Link::State::Open)
        note(QStringLiteral("已打开：") + name());
    else if (link->state() == Link::State::Closed)
        note(link->reason().isEmpty() ? QStringLiteral("已关闭")
                                      : QStringLiteral("已断开：") + link->reason());
}

void SessionLog::add(LogForm::Direction direction, qint64 timeUs, const QByteArray &bytes,
                     const QByteArray &peer)
{
    if (!isOn() || bytes.isEmpty())
        return;
    if (m_lost > 0 && m_writer->status().reason.isEmpty()) {
        const QString text = QStringLiteral("此处缺少 %1 字节").arg(m_lost);
        if (m_writer->add({LogForm::Event, timeUs, TextCodec::encode(text, m_codec), {}}))
            m_lost = 0;
    }
    if (!m_writer->add({direction, timeUs, bytes, peer}))
        m_lost += bytes.size();
}

void SessionLog::note(const QString &text)
{
    add(LogForm::Event, Link::nowUs(), TextCodec::encode(text, m_codec), {});
}

void SessionLog::start(LogForm::Kind form, const LogFiles::Target &target, int codecIndex, bool opensNow)
{
    m_writer = std::make_unique<LogWriter>(form, target); // an old one still writes its rest
    m_status = LogWriter::Status();
    m_isStopping = false;
    m_codec = codecIndex;
    m_lost = 0;
    if (opensNow)
        m_writer->openFile();
    m_poll.start();
    emit changed();
}

void SessionLog::stop()
{
    if (!isOn())
        return;
    m_isStopping = true;
    m_writer->finish();
    if (m_writer->waitForFinished(0))
        poll();
    else
        emit changed();
}

void SessionLog::poll()
{
    const LogWriter::Status before = std::exchange(m_status, m_writer->status());
    const QString name = QFileInfo(m_status.fileName).fileName();
    if (!m_status.reason.isEmpty() && m_status.reason != before.reason)
        emit failed(QStringLiteral("会话日志无法写入，通信不受影响：%1").arg(m_status.reason));
    else if (m_status.reason.isEmpty() && !before.reason.isEmpty())
        emit recovered(QStringLiteral("会话日志恢复写入"));
    if (m_status.lost > 0 && before.lost == 0)
        emit failed(QStringLiteral("会话日志无法写入，部分数据已丢失！"));
    if (m_status.isFinished) {
        m_writer.reset();
        m_isStopping = false;
        m_poll.stop();
    }
    if (m_status.isFinished || m_status.written != before.written || m_status.reason != before.reason ||
        m_status.fileName != before.fileName)
        emit changed();
}
