#include "ymodemcommand.h"

#include "console.h"

#include <QFileInfo>

#include <utility>

namespace {

constexpr int kStepPercent = 10; // where lines are not written over

ExitStatus exitStatus(Ymodem::Status status, bool isComplete)
{
    switch (status) {
    case Ymodem::Finish:
        return isComplete ? ExitStatus::Done : ExitStatus::Refused;
    case Ymodem::Abort:
        return ExitStatus::Refused;
    default:
        return ExitStatus::TimedOut;
    }
}

} // namespace

YmodemCommand::YmodemCommand(const Options &options)
    : PortCommand(options)
{
    connect(&m_transmit, &YmodemFileTransmit::transmitProgress, this, &YmodemCommand::showProgress);
    connect(&m_transmit, &YmodemFileTransmit::transmitStatus, this, &YmodemCommand::handleStatus);
    connect(&m_transmit, &YmodemFileTransmit::transmitHint, this, &Console::tell);
}

void YmodemCommand::prepare()
{
    for (const QString &name : options().files) {
        const QFileInfo file(name);
        if (!file.isFile() || !file.isReadable())
            return finish(ExitStatus::Refused, file.exists() ? QStringLiteral("文件无法读取：%1").arg(name)
                                                             : QStringLiteral("文件不存在：%1").arg(name));
    }
}

void YmodemCommand::handleOpened()
{
    stopTrying();
    m_transmit.setFileList(options().files);
    m_transmit.setPortName(options().port.name());
    m_transmit.setBaudRate(options().port.isSerial() ? options().port.baudRate() : 0);
    m_transmit.startTransmit(link());
}

void YmodemCommand::handleLost()
{
    endProgressLine();
}

// The receiver is told, and the command ends with the transfer.
void YmodemCommand::handleInterrupt()
{
    if (m_transmit.isBusy())
        m_transmit.stopTransmit();
    else
        PortCommand::handleInterrupt();
}

void YmodemCommand::handleStatus(Ymodem::Status status)
{
    const bool isEnd = status != Ymodem::Establish && status != Ymodem::Transmit;
    if (!isEnd || m_transmit.isBusy())
        return; // an end is reported again when its last bytes have left
    endProgressLine();
    const bool isComplete = m_transmit.reason().isEmpty();
    if (!isComplete)
        Console::tell(m_transmit.reason());
    const QStringList unsent = m_transmit.unsentFiles();
    for (const QString &name : unsent)
        Console::tell(QStringLiteral("未完成：%1").arg(name));
    finish(exitStatus(status, isComplete));
}

// A terminal's line is written over, anything else gets a line now and then.
void YmodemCommand::showProgress(int percent, const QString &name)
{
    if (options().isQuiet)
        return;
    const bool isNewFile = name != m_shownName;
    const bool isOver = Console::isErrorTerminal();
    const int step = isOver ? 1 : kStepPercent;
    if (!isNewFile && percent / step == m_shownPercent / step)
        return;
    if (isNewFile)
        endProgressLine();
    m_shownName = name;
    m_shownPercent = percent;
    const QString text = QStringLiteral("%1 %2% %3/%4字节")
                             .arg(QFileInfo(name).fileName())
                             .arg(percent)
                             .arg(m_transmit.bytesSent())
                             .arg(m_transmit.fileSize());
    if (!isOver)
        return Console::tell(text);
    Console::tellPart(QLatin1Char('\r') + text);
    m_isLineOpen = true;
}

void YmodemCommand::endProgressLine()
{
    if (std::exchange(m_isLineOpen, false))
        Console::tell(QString());
}
