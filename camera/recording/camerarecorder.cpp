#include "camerarecorder.h"

#include <QDateTime>

#include <algorithm>

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

void CameraRecorder::start(const Target &target, StreamHead head)
{
    m_target = target;
    m_status = {};
    m_isStopping = false;
    m_lastPictureMs.fill(-1);
    m_elapsedMs = 0;
    head.beganMs = QDateTime::currentMSecsSinceEpoch();
    m_writer = std::make_unique<RecordingWriter>(target.kind, target.folder,
                                                 newStem(QStringLiteral("camera")), head.bytes());
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
    item.record = record.toBytes();
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
    item.timeUs = m_clock.nsecsElapsed() / 1000;
    m_writer->add(item);
}

bool CameraRecorder::isDue(int device)
{
    if (m_target.kind != Kind::Pictures)
        return true;
    qint64 &last = m_lastPictureMs.at(static_cast<size_t>(device));
    const qint64 now = m_clock.elapsed();
    if (last >= 0 && now - last < m_target.intervalMs)
        return false;
    last = now;
    return true;
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
    m_pictures.push_back(std::make_unique<RecordingWriter>(Kind::Pictures, folder,
                                                           newStem(QStringLiteral("picture")), QByteArray()));
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
