#include "portcommand.h"

#include "console.h"

#include <utility>

PortCommand::PortCommand(const Options &options)
    : m_options(options)
    , m_keeper(options.port)
{
    m_keeper.setKeepsTrying(options.keepsTrying);
    connect(&m_keeper, &LinkKeeper::opened, this, [this] { handleOpened(); });
    connect(&m_keeper, &LinkKeeper::waiting, this, [this](const QString &reason) {
        Console::tell(QStringLiteral("等待%1：%2").arg(m_options.port.name(), reason));
    });
    connect(&m_keeper, &LinkKeeper::failed, this, [this](const QString &reason) {
        finish(ExitStatus::Refused, QStringLiteral("无法打开%1：%2").arg(m_options.port.name(), reason));
    });
    connect(&m_keeper, &LinkKeeper::lost, this, [this](const QString &reason) {
        if (m_isFinishing)
            return;
        handleLost();
        if (m_keeper.keepsTrying())
            Console::tell(QStringLiteral("%1已断开：%2").arg(m_options.port.name(), reason));
        else
            finish(ExitStatus::Lost, QStringLiteral("%1已断开：%2").arg(m_options.port.name(), reason));
    });
    connect(&m_keeper, &LinkKeeper::closed, this, &PortCommand::end);
    connect(link(), &Link::received, this, &PortCommand::handleBytes);
    connect(link(), &Link::dropped, this, &PortCommand::handleDropped);
}

void PortCommand::start()
{
    if (m_isFinishing)
        return;
    QString reason;
    if (!m_options.port.isNameUsable())
        return finish(ExitStatus::Refused, QStringLiteral("串口不存在：%1").arg(m_options.port.name()));
    if (!m_options.logFile.isEmpty() && !m_log.open(m_options.logFile, &reason))
        return finish(ExitStatus::Refused, QStringLiteral("无法写入%1：%2").arg(m_options.logFile, reason));
    prepare();
    if (!m_isFinishing)
        m_keeper.open();
}

void PortCommand::interrupt()
{
    m_isInterrupted = true;
    if (m_isFinishing)
        m_keeper.close();
    else
        handleInterrupt();
}

void PortCommand::handleBytes(const QByteArray &bytes, qint64 arrivalUs)
{
    QString reason;
    if (m_log.isOpen() && !m_log.write(bytes, &reason))
        Console::tell(QStringLiteral("%1不再写入：%2").arg(m_options.logFile, reason));
    handleReceived(bytes, arrivalUs);
}

void PortCommand::handleDropped(qint64 bytes)
{
    Console::tell(QStringLiteral("有 %1 字节未发出").arg(bytes));
    if (m_isFinishing && !m_isInterrupted && m_status == ExitStatus::Done)
        m_status = ExitStatus::TimedOut;
}

void PortCommand::finish(ExitStatus status)
{
    if (std::exchange(m_isFinishing, true))
        return;
    m_status = status;
    m_keeper.close();
}

void PortCommand::finish(ExitStatus status, const QString &message)
{
    if (!m_isFinishing)
        Console::tell(message);
    finish(status);
}

// Later: the link may be in the middle of its report.
void PortCommand::end()
{
    if (std::exchange(m_isEnded, true))
        return;
    QMetaObject::invokeMethod(
        this, [this] { emit ended(m_status); }, Qt::QueuedConnection);
}

QByteArray PortCommand::encoded(const QString &text) const
{
    return TextCodec::encode(text, m_options.codecIndex) + m_options.lineEnd.value_or("\r\n");
}
