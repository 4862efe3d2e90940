#include "camerarecorder.h"

#include <QDateTime>

#include <algorithm>
#include <utility>

namespace {

constexpr int kPollMs = 250;

// Of the files that are begun now.
QString newStem(const QString &what)
{
    return what + QDateTime::currentDateTime().toString(QStringLiteral("_yyyyMMdd_HHmmss_zzz"));
}

} // namespace

CameraRecorder::CameraRecorder(QObject *parent)
    : QObject(parent)
    , m_poll(this)
{
    connect(&m_poll, &QTimer::timeout, this, &CameraRecorder::poll);
}

void CameraRecorder::start(const Target &target, const std::function<StreamHead()> &head)
{
    m_target = target;
    m_head = head;
    m_status = {};
    m_isStopping = false;
    m_lastPictureUs.fill(-1);
    m_shiftUs = -m_playedUs.value_or(0);
    m_elapsedMs = 0;
    m_beganMs = QDateTime::currentMSecsSinceEpoch();
    m_writer =
        std::make_unique<RecordingWriter>(target.kind, target.folder, newStem(QStringLiteral("camera")));
    m_clock.start();
    m_poll.start(kPollMs);
    emit changed();
}

void CameraRecorder::stop()
{
    if (!isOn())
        return;
    m_isStopping = true;
    m_elapsedMs = m_clock.elapsed();
    m_writer->finish();
    poll();
}

bool CameraRecorder::waitForFinished(int ms)
{
    QElapsedTimer waited;
    waited.start();
    const auto wait = [&waited, ms](RecordingWriter &writer) {
        writer.finish();
        return writer.waitForFinished(static_cast<int>(qMax<qint64>(0, ms - waited.elapsed())));
    };
    bool isDone = !m_writer || wait(*m_writer);
    for (const auto &picture : m_pictures)
        isDone = wait(*picture) && isDone;
    return isDone;
}

// ---- what arrives

void CameraRecorder::addRecord(const StreamRecord &record)
{
    RecordingOutput::Item item;
    if (m_head) {
        StreamHead head = std::exchange(m_head, nullptr)();
        head.beganMs = m_beganMs;
        item.record = head.bytes();
    }
    item.record += record.toBytes();
    m_writer->add(item);
}

void CameraRecorder::addBytes(const QString &sender, const QByteArray &bytes, bool isDatagram)
{
    if (isOn() && m_target.kind == Kind::Stream)
        addRecord({StreamRecord::Bytes, isDatagram, m_clock.nsecsElapsed() / 1000, sender, bytes});
}

void CameraRecorder::addEnd(const QString &sender, bool inOrder)
{
    if (isOn() && m_target.kind == Kind::Stream)
        addRecord({inOrder ? StreamRecord::Ended : StreamRecord::Lost,
                   false,
                   m_clock.nsecsElapsed() / 1000,
                   sender,
                   {}});
}

void CameraRecorder::addFrame(int device, const CameraFrameData &frame)
{
    device = device == 1 ? 1 : 0;
    m_lastFrames.at(static_cast<size_t>(device)) = frame;
    if (!isOn() || m_target.kind == Kind::Stream || !isDue(device))
        return;
    RecordingOutput::Item item;
    item.device = device;
    item.frame = frame;
    item.timeUs = nowUs();
    m_writer->add(item);
}

bool CameraRecorder::isDue(int device)
{
    if (m_target.kind != Kind::Pictures)
        return true;
    qint64 &last = m_lastPictureUs.at(static_cast<size_t>(device));
    const qint64 now = nowUs();
    if (last >= 0 && now - last < m_target.intervalMs * 1000LL)
        return false;
    last = now;
    return true;
}

// Goes on where it was when playing begins or ends.
void CameraRecorder::setPlayedTime(const std::optional<qint64> &us)
{
    const qint64 now = nowUs();
    const bool goesOn = us.has_value() == m_playedUs.has_value();
    m_playedUs = us && m_playedUs ? qMax(*us, *m_playedUs) : us;
    if (!goesOn)
        m_shiftUs += now - nowUs();
}

qint64 CameraRecorder::nowUs() const
{
    return m_shiftUs + (m_playedUs ? *m_playedUs : isOn() ? m_clock.nsecsElapsed() / 1000 : 0);
}

// ---- single pictures

bool CameraRecorder::takePicture(int device, const QString &folder)
{
    device = device == 1 ? 1 : 0;
    RecordingOutput::Item item;
    item.device = device;
    item.frame = m_lastFrames.at(static_cast<size_t>(device));
    if (item.frame.data.isEmpty())
        return false;
    m_pictures.push_back(
        std::make_unique<RecordingWriter>(Kind::Pictures, folder, newStem(QStringLiteral("picture"))));
    m_pictures.back()->add(item);
    m_pictures.back()->finish();
    m_poll.start(kPollMs);
    return true;
}

void CameraRecorder::pollPictures()
{
    const auto report = [this](const std::unique_ptr<RecordingWriter> &picture) {
        const RecordingWriter::Status status = picture->status();
        if (!status.isFinished)
            return false;
        if (!status.reason.isEmpty())
            emit failed(QStringLiteral("图像保存失败：%1").arg(status.reason));
        else if (status.items == 0)
            emit failed(QStringLiteral("图像保存失败：无法解码"));
        else
            emit pictureSaved(status.lastFile);
        return true;
    };
    m_pictures.erase(std::remove_if(m_pictures.begin(), m_pictures.end(), report), m_pictures.end());
}

// ---- how it goes

void CameraRecorder::poll()
{
    pollPictures();
    if (m_writer) {
        m_status = m_writer->status();
        if (!m_isStopping)
            m_elapsedMs = m_clock.elapsed();
        const bool isRefused = !m_status.reason.isEmpty();
        if (m_status.isFinished) {
            m_writer.reset();
            m_isStopping = false;
            if (isRefused)
                emit failed(QStringLiteral("录制已停止：%1").arg(m_status.reason));
        }
    }
    if (isFinished())
        m_poll.stop();
    emit changed();
}
