#include "readpause.h"

#include <QSerialPort>
#include <QSocketNotifier>

#include <utility>

namespace {

// A terminal's buffer holds 4 KB.
constexpr qint64 kPieceBytes = 3 * 1024;
// Bytes in a millisecond. A slower line, as any UART's, would wake the program about
// as often with pauses.
constexpr qint64 kMinBytesPerMs = 256;
constexpr int kMinFastReads = 4;
// A pause is worth it where the driver hands over less than this at a time, which
// is looked at now and then.
constexpr qint64 kMaxChunkBytes = 2 * 1024;
constexpr int kPausesPerLook = 32;

} // namespace

ReadPause::ReadPause(QObject *parent)
    : QObject(parent)
    , m_timer(this)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (m_notifier)
            m_notifier->setEnabled(true);
    });
}

void ReadPause::setPort(const QSerialPort *port)
{
    m_timer.stop();
    m_fastReads = 0;
    m_notifier.clear();
    const auto notifiers = port->findChildren<QSocketNotifier *>();
    for (QSocketNotifier *notifier : notifiers) {
        if (notifier->type() == QSocketNotifier::Read)
            m_notifier = notifier;
    }
}

void ReadPause::handleRead(qint64 bytes, qint64 nowUs)
{
    const qint64 elapsedUs = qMax<qint64>(nowUs - m_readAtUs, 1);
    m_readAtUs = nowUs;
    const bool isFast = bytes * 1000 >= elapsedUs * kMinBytesPerMs;
    m_fastReads = isFast ? m_fastReads + 1 : 0;
    if (!std::exchange(m_isPaused, false))
        m_pausesLeft = bytes < kMaxChunkBytes ? kPausesPerLook : 0;
    const qint64 pauseMs = bytes > 0 ? qMin<qint64>(m_maxMs, kPieceBytes * elapsedUs / bytes / 1000) : 0;
    if (m_fastReads < kMinFastReads || pauseMs < 1 || m_pausesLeft == 0 || !m_notifier)
        return;
    --m_pausesLeft;
    m_isPaused = true;
    m_notifier->setEnabled(false);
    m_timer.start(static_cast<int>(pauseMs));
}

void ReadPause::end()
{
    m_fastReads = 0;
    if (!m_timer.isActive())
        return;
    m_timer.stop();
    if (m_notifier)
        m_notifier->setEnabled(true);
}
