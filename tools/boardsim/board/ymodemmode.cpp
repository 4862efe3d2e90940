#include "ymodemmode.h"

#include <QDir>

namespace Boardsim {

YmodemMode::YmodemMode(const Options &options, VirtualPort &port)
    : BoardMode(port)
    , m_folder(options.receiveFolder)
    , m_receiver(options.ymodem, *this)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] { m_receiver.timeOut(); });
}

void YmodemMode::send(const QByteArray &bytes)
{
    port().write(bytes);
}

void YmodemMode::setTimer(int ms)
{
    if (ms >= 0)
        m_timer.start(ms);
    else
        m_timer.stop();
}

bool YmodemMode::beginFile(const QString &name)
{
    m_file.setFileName(QDir(m_folder).filePath(name));
    return QDir().mkpath(m_folder) && m_file.open(QIODevice::WriteOnly | QIODevice::Truncate);
}

bool YmodemMode::storeBytes(const QByteArray &bytes)
{
    return m_file.write(bytes) == bytes.size();
}

void YmodemMode::endFile(bool complete)
{
    m_file.close();
    if (!complete)
        m_file.remove();
}

} // namespace Boardsim
