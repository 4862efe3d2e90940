#include "shellmode.h"

#include <QStringList>

namespace Boardsim {

namespace {

constexpr int maxLineBytes = 256;
constexpr qint64 chunkBytes = 16384;
constexpr qlonglong maxWaitMs = 600000;
constexpr qlonglong maxFloodBytes = qlonglong(1) << 40;

// The one number that a command takes; false if it is missing or out of range.
bool argument(const QStringList &words, qlonglong highest, qlonglong *value)
{
    bool ok = false;
    *value = words.value(1).toLongLong(&ok);
    return ok && words.size() == 2 && *value >= 0 && *value <= highest;
}

} // namespace

ShellMode::ShellMode(const Options &options, VirtualPort &port)
    : BoardMode(port)
    , m_encoding(options.encoding)
    , m_seed(options.seed)
    , m_payload(options.encoding, options.seed)
{
    m_stall.setSingleShot(true);
    m_stall.setTimerType(Qt::PreciseTimer);
    connect(&m_stall, &QTimer::timeout, this, [this] { this->port().setStalled(false); });
}

void ShellMode::stop()
{
    m_line.clear();
    m_floodLeft = 0;
    m_stall.stop();
    port().setStalled(false);
}

void ShellMode::received(const QByteArray &bytes)
{
    for (const char byte : bytes) {
        if (byte == '\r' || byte == '\n') {
            const QString line = QString::fromUtf8(m_line).simplified();
            m_line.clear();
            if (!line.isEmpty())
                execute(line);
        } else if (m_line.size() < maxLineBytes) {
            m_line += byte;
        }
    }
}

void ShellMode::execute(const QString &line)
{
    const QStringList words = line.split(QLatin1Char(' '));
    const QString &command = words.constFirst();
    qlonglong value = 0;
    if (line == QLatin1String("help")) {
        answer(QStringLiteral(
            "命令: help, version, led on|off, adc, stall <毫秒>, flood <字节>, unplug <毫秒>"));
    } else if (line == QLatin1String("version")) {
        answer(QStringLiteral("boardsim 1.0, 模拟开发板"));
    } else if (line == QLatin1String("led on")) {
        answer(QStringLiteral("LED 已打开"));
    } else if (line == QLatin1String("led off")) {
        answer(QStringLiteral("LED 已关闭"));
    } else if (line == QLatin1String("adc")) {
        const quint32 sample = scrambled(m_seed, m_samples++) % 4096; // 12 bits of 3.3 V
        answer(QStringLiteral("ADC = %1, 电压 %2 V").arg(sample).arg(sample * 3.3 / 4095, 0, 'f', 3));
    } else if (command == QLatin1String("stall") && argument(words, maxWaitMs, &value)) {
        port().setStalled(true);
        m_stall.start(int(value));
    } else if (command == QLatin1String("flood") && argument(words, maxFloodBytes, &value)) {
        m_payload = Payload(m_encoding, m_seed);
        m_floodLeft = value;
        outputEmpty();
    } else if (command == QLatin1String("unplug") && argument(words, maxWaitMs, &value)) {
        emit unplugRequested(int(value));
    } else {
        answer(QStringLiteral("未知命令: %1").arg(line));
    }
}

void ShellMode::answer(const QString &text)
{
    port().write(encoded(text + QStringLiteral("\r\n"), m_encoding));
}

void ShellMode::outputEmpty()
{
    // Also called with a flood just begun behind an answer; the order stays.
    const qint64 count = qMin(chunkBytes, m_floodLeft);
    if (count == 0)
        return;
    m_floodLeft -= count;
    port().write(m_payload.take(int(count)));
}

} // namespace Boardsim
