#include "board.h"

#include <QRegularExpression>

#include <limits>

namespace Boardsim {

void Board::Options::addTo(CommandLine &line)
{
    constexpr int max = std::numeric_limits<int>::max();
    folder = qEnvironmentVariable("KORVEX_VIRTUAL_PORTS");
    line.addText("folder", "path",
                 QStringLiteral("Folder of the port links (default: $KORVEX_VIRTUAL_PORTS)."), &folder);
    line.addTexts("port", "COM<n>", QStringLiteral("Name of the port (default: COM3)."),
                  [this](const QString &text) {
                      static const QRegularExpression name(QStringLiteral("\\ACOM[1-9][0-9]{0,3}\\z"));
                      port = text;
                      return text.contains(name);
                  });
    line.addNumber("delay", "ms", QStringLiteral("Begins so long after a host has opened the port"),
                   &startDelayMs, 0, max);
    line.addFlag("start-on-byte", QStringLiteral("Begins with the first byte from the host instead."),
                 &startOnByte);
    line.addNumber("unplug-after", "ms",
                   QStringLiteral("Vanishes so long after a host first opened the port; -1 never"),
                   &unplugAfterMs, -1, max);
    line.addNumber("replug-after", "ms", QStringLiteral("Comes back so long after vanishing; -1 never"),
                   &replugAfterMs, -1, max);
    line.addText("record", "file", QStringLiteral("Writes every byte from the host to this file."),
                 &recordFile);
    line.addCheck([this] {
        if (folder.isEmpty())
            CommandLine::reject(QStringLiteral("name a folder with --folder or in KORVEX_VIRTUAL_PORTS"));
    });
}

Board::Board(const Options &options, const MakeMode &makeMode, QObject *parent)
    : BoardBase(parent)
    , m_options(options)
    , m_record(options.recordFile)
    , m_port(options.folder, options.port)
    , m_mode(makeMode(m_port))
    , m_unplugArmed(options.unplugAfterMs >= 0)
{
    connect(&m_port, &VirtualPort::hostArrived, this, &Board::onHostArrived);
    connect(&m_port, &VirtualPort::hostLeft, this, &Board::onHostLeft);
    connect(&m_port, &VirtualPort::received, this, &Board::onReceived);
    connect(&m_port, &VirtualPort::outputEmpty, m_mode.get(), &BoardMode::outputEmpty);
    connect(m_mode.get(), &BoardMode::finished, this, [this] { emit happened(QStringLiteral("finished")); });
    connect(m_mode.get(), &BoardMode::happened, this, &Board::happened);
    connect(m_mode.get(), &BoardMode::unplugRequested, this, &Board::unplug);

    for (QTimer *timer : {&m_startDelay, &m_unplugDelay, &m_replugDelay}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
    }
    connect(&m_startDelay, &QTimer::timeout, this, &Board::startMode);
    connect(&m_unplugDelay, &QTimer::timeout, this, [this] { unplug(m_options.replugAfterMs); });
    connect(&m_replugDelay, &QTimer::timeout, this, [this] {
        QString error;
        if (!plug(&error))
            emit failed(error);
    });
}

Board::~Board()
{
    // While the mode still exists to receive it.
    m_port.unplug();
}

bool Board::begin(QString *error)
{
    if (!m_options.recordFile.isEmpty() &&
        !m_record.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
        *error = QStringLiteral("cannot write %1: %2").arg(m_options.recordFile, m_record.errorString());
        return false;
    }
    return plug(error);
}

bool Board::plug(QString *error)
{
    if (!m_port.plug(error))
        return false;
    emit happened(QStringLiteral("plugged %1 %2").arg(m_options.port, m_port.device()));
    return true;
}

void Board::unplug(int replugAfterMs)
{
    m_port.unplug();
    emit happened(QStringLiteral("unplugged %1").arg(m_options.port));
    if (replugAfterMs >= 0)
        m_replugDelay.start(replugAfterMs);
}

void Board::onHostArrived()
{
    emit happened(QStringLiteral("host arrived"));
    if (m_unplugArmed) {
        m_unplugArmed = false;
        m_unplugDelay.start(m_options.unplugAfterMs);
    }
    if (!m_options.startOnByte)
        m_startDelay.start(m_options.startDelayMs);
}

void Board::onHostLeft()
{
    m_startDelay.stop();
    m_started = false;
    m_mode->stop();
    emit happened(QStringLiteral("host left"));
}

void Board::onReceived(const QByteArray &bytes)
{
    if (m_record.isOpen() && m_record.write(bytes) != bytes.size())
        emit failed(QStringLiteral("cannot write %1: %2").arg(m_options.recordFile, m_record.errorString()));
    if (m_options.startOnByte && !m_started)
        startMode();
    m_mode->received(bytes);
}

void Board::startMode()
{
    m_started = true;
    m_mode->start();
}

QString Board::statistics() const
{
    const VirtualPort::Statistics numbers = m_port.statistics();
    return QStringLiteral("written=%1 read=%2 dropped=%3 blocked_ms=%4")
               .arg(numbers.written)
               .arg(numbers.read)
               .arg(numbers.dropped)
               .arg(numbers.blockedMs) +
           m_mode->statistics();
}

} // namespace Boardsim
