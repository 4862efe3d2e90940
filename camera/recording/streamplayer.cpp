#include "streamplayer.h"

#include "filereason.h"

#include <QFileInfo>

namespace {

constexpr int kSliceMs = 8;
constexpr int kThrottleMs = 10;
constexpr qint64 kMaxPauseUs = 2000000;

} // namespace

StreamPlayer::StreamPlayer(QObject *parent)
    : QObject(parent)
    , m_timer(this)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &StreamPlayer::play);
}

QString StreamPlayer::start(const QString &fileName, bool isFast)
{
    stop();
    m_file.setFileName(fileName);
    if (!QFileInfo(fileName).isFile())
        return QStringLiteral("不是普通文件");
    if (!m_file.open(QIODevice::ReadOnly))
        return FileReason::of(m_file);
    if (!m_reader.open(&m_file)) {
        m_file.close();
        return QStringLiteral("不是图像数据流的录制文件");
    }
    m_isFast = isFast;
    m_next.reset();
    m_timeUs = 0;
    m_skippedUs = 0;
    m_clock.start();
    m_timer.start(0);
    return {};
}

void StreamPlayer::stop()
{
    if (isPlaying())
        end({});
}

void StreamPlayer::end(const QString &fault)
{
    m_timer.stop();
    m_next.reset();
    m_file.close();
    emit ended(fault);
}

int StreamPlayer::permille() const
{
    return m_file.size() > 0 ? static_cast<int>(m_file.pos() * 1000 / m_file.size()) : 0;
}

void StreamPlayer::play()
{
    QElapsedTimer slice;
    slice.start();
    if (!m_next)
        readNext();
    while (m_next) {
        if (m_isBehind && m_isBehind())
            return m_timer.start(kThrottleMs);
        const qint64 pauseMs = m_isFast ? 0 : (m_next->timeUs - m_skippedUs) / 1000 - m_clock.elapsed();
        if (pauseMs > 0 || slice.elapsed() >= kSliceMs) {
            m_timer.start(static_cast<int>(qMax<qint64>(0, pauseMs)));
            return;
        }
        const StreamRecord record = *m_next;
        m_timeUs = record.timeUs;
        emit played(record);
        if (isPlaying()) // and was not stopped by who got it
            readNext();
    }
}

// A time before the last one is a fault of the file; its bytes are played all the same.
void StreamPlayer::readNext()
{
    StreamRecord record;
    const StreamReader::Result result = m_reader.next(&record);
    if (result != StreamReader::Record) {
        end(result == StreamReader::End ? QString() : QStringLiteral("文件的其余部分不完整或已损坏"));
        return;
    }
    m_skippedUs += qMax<qint64>(0, record.timeUs - m_timeUs - kMaxPauseUs);
    m_next = record;
}
