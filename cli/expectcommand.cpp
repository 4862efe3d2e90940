#include "expectcommand.h"

#include "console.h"

#include <utility>

namespace {

// A line without end is judged after so much silence.
constexpr int kQuietMs = 20;

} // namespace

ExpectCommand::ExpectCommand(const Options &options)
    : PortCommand(options)
    , m_expected(*options.pattern, options.codecIndex, &Link::nowUs)
{
    m_quiet.setSingleShot(true);
    m_limit.setSingleShot(true);
    connect(&m_quiet, &QTimer::timeout, this, &ExpectCommand::checkQuiet);
    connect(&m_limit, &QTimer::timeout, this, [this] {
        if (!succeed(m_expected.openLine()))
            finish(ExitStatus::TimedOut, QStringLiteral("超时：没有等到匹配的行"));
    });
}

void ExpectCommand::prepare()
{
    m_limit.start(options().timeoutMs);
}

void ExpectCommand::handleOpened()
{
    if (options().text && !std::exchange(m_hasSent, true))
        link()->send(encoded(*options().text));
}

void ExpectCommand::handleReceived(const QByteArray &bytes, qint64 arrivalUs)
{
    if (isFinishing())
        return;
    m_arrivalUs = arrivalUs;
    if (!succeed(m_expected.add(bytes)) && !m_quiet.isActive())
        m_quiet.start(kQuietMs);
}

void ExpectCommand::checkQuiet()
{
    const qint64 leftUs = kQuietMs * 1000 - (Link::nowUs() - m_arrivalUs);
    if (leftUs > 0)
        m_quiet.start(static_cast<int>((leftUs + 999) / 1000));
    else
        succeed(m_expected.openLine());
}

void ExpectCommand::handleLost()
{
    succeed(m_expected.openLine());
}

bool ExpectCommand::succeed(const std::optional<QByteArray> &line)
{
    tellUnjudged();
    if (!line || isFinishing())
        return line.has_value();
    m_limit.stop();
    m_quiet.stop();
    // What is sent to a console is UTF-8; otherwise the line is printed as it came.
    QByteArray shown = *line;
    if (options().codecIndex != TextCodec::Utf8)
        shown = TextCodec::decode(shown, options().codecIndex).toUtf8();
    QString reason;
    if (Console::write(shown + '\n', &reason) == Console::Outcome::Failed)
        finish(ExitStatus::Refused, QStringLiteral("无法写标准输出：%1").arg(reason));
    finish(ExitStatus::Done);
    return true;
}

void ExpectCommand::tellUnjudged()
{
    if (m_expected.unjudgedLines() > 0 && !std::exchange(m_hasToldUnjudged, true))
        Console::tell(QStringLiteral("表达式在某些行上步数过多，未完整匹配"));
}
