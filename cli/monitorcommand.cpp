#include "monitorcommand.h"

#include "console.h"

#include <utility>

namespace {

// A packet of hexadecimal digits ends with so much silence.
constexpr int kPauseMs = 10;

// More input is read when the link holds less than this.
constexpr qint64 kMaxPendingBytes = 32 * 1024;

MonitorText::Options textOptions(const Options &options)
{
    MonitorText::Options text;
    text.isHex = options.isHex;
    text.hasStamps = options.hasStamps;
    text.codecIndex = options.codecIndex;
    text.filter = options.pattern;
    return text;
}

} // namespace

MonitorCommand::MonitorCommand(const Options &options)
    : PortCommand(options)
    , m_passesOn(!options.isHex && !options.hasStamps && !options.pattern &&
                 options.codecIndex == TextCodec::Utf8)
    , m_text(textOptions(options))
{
    m_pause.setSingleShot(true);
    m_pause.setTimerType(Qt::PreciseTimer);
    m_end.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &MonitorCommand::checkPause);
    connect(&m_end, &QTimer::timeout, this, [this] { handleEnd(); });
    connect(&m_input, &StandardInput::received, this, &MonitorCommand::handleInput);
    connect(link(), &Link::handedOver, this, &MonitorCommand::sendInput);
    connect(this, &PortCommand::ended, this, [this] { show(m_text.endLine()); });
}

void MonitorCommand::prepare()
{
    if (!options().durationMs)
        return;
    m_end.start(*options().durationMs);
    Console::setDeadline(*options().durationMs);
}

void MonitorCommand::handleEnd()
{
    if (m_hasOpened)
        finish(ExitStatus::Done);
    else
        finish(ExitStatus::TimedOut, QStringLiteral("超时：端口没有打开"));
}

void MonitorCommand::handleOpened()
{
    m_hasOpened = true;
    if (m_pending.isEmpty())
        m_input.next();
    else
        sendInput();
}

void MonitorCommand::handleReceived(const QByteArray &bytes, qint64 arrivalUs)
{
    if (m_passesOn) {
        show(bytes);
        return;
    }
    if (options().isHex && m_arrivalUs > 0 && arrivalUs - m_arrivalUs > kPauseMs * 1000)
        show(m_text.endLine());
    m_arrivalUs = arrivalUs;
    show(m_text.add(bytes, arrivalUs / 1000));
    if (options().isHex && !m_pause.isActive())
        m_pause.start(kPauseMs);
    if (m_text.unjudgedLines() > 0 && !std::exchange(m_hasToldUnjudged, true))
        Console::tell(QStringLiteral("表达式在某些行上步数过多，这些行不显示"));
}

// As the arrivals' times say; a timer started again for each would be expensive.
void MonitorCommand::checkPause()
{
    const qint64 leftUs = kPauseMs * 1000 - (Link::nowUs() - m_arrivalUs);
    if (leftUs > 0)
        m_pause.start(static_cast<int>((leftUs + 999) / 1000));
    else
        show(m_text.endLine());
}

void MonitorCommand::handleLost()
{
    show(m_text.endLine());
}

void MonitorCommand::show(const QByteArray &text)
{
    if (text.isEmpty() || m_isOutputGone)
        return;
    QString reason;
    switch (Console::write(text, &reason)) {
    case Console::Outcome::Written:
        return;
    case Console::Outcome::Closed:
    case Console::Outcome::Ended:
        m_isOutputGone = true;
        finish(ExitStatus::Done);
        return;
    case Console::Outcome::Failed:
        m_isOutputGone = true;
        finish(ExitStatus::Refused, QStringLiteral("无法写标准输出：%1").arg(reason));
        return;
    }
}

// ---- input

QByteArray MonitorCommand::inputForDevice(const QByteArray &bytes)
{
    QByteArray result = bytes;
    if (options().codecIndex != TextCodec::Utf8)
        result = TextCodec::encode(m_inputDecoder.decode(bytes.constData(), bytes.size(), TextCodec::Utf8),
                                   options().codecIndex);
    return options().lineEnd ? result.replace('\n', *options().lineEnd) : result;
}

void MonitorCommand::handleInput(const QByteArray &bytes)
{
    m_pending = inputForDevice(bytes);
    sendInput();
}

// Input that comes while the port is lost waits for it.
void MonitorCommand::sendInput()
{
    if (!link()->isOpen() || link()->pendingBytes() > kMaxPendingBytes)
        return;
    if (!m_pending.isEmpty() && link()->send(m_pending) == 0)
        return;
    m_pending.clear();
    m_input.next();
}
