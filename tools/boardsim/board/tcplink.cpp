#include "tcplink.h"

#include "loglines.h"

#include <QFile>

#ifdef Q_OS_UNIX
#include <sys/socket.h>
#endif

namespace Boardsim {

static constexpr int blockBytes = 1 << 20;
static constexpr qint64 maxQueued = 1 << 20;

void TcpOptions::addTo(CommandLine &line)
{
    line.addText("address", "ip", QStringLiteral("To listen on or to connect to (default: 127.0.0.1)."),
                 &address);
    line.addNumber("net-port", "n", QStringLiteral("Own port, 0 for any; or the server's"), &port, 0, 65535);
    line.addChoice("act", QStringLiteral("What it does with a connection"), &act,
                   {{"echo", Act::Echo},
                    {"silent", Act::Silent},
                    {"flood", Act::Flood},
                    {"log", Act::Log},
                    {"talk", Act::Talk},
                    {"drip", Act::Drip},
                    {"half-close", Act::HalfClose},
                    {"reset", Act::Reset},
                    {"vanish", Act::Vanish},
                    {"deaf", Act::Deaf},
                    {"camera", Act::Camera}});
    line.addNumber("peers", "n", QStringLiteral("Connections to make"), &peers, 1, 10000);
    line.addNumber("delay", "ms", QStringLiteral("Begins so long after the connection"), &startDelayMs, 0,
                   3600000);
    line.addNumber("rate", "n", QStringLiteral("log: lines per second"), &linesPerSecond, 1, 100000);
    line.addNumber("message-bytes", "n", QStringLiteral("talk: size of a message"), &messageBytes, 0, 65507);
    line.addNumber("period", "ms", QStringLiteral("talk, drip: pace; also between attempts to connect"),
                   &periodMs, 1, 60000);
    line.addNumber("duration", "ms", QStringLiteral("flood: ends after this; -1 never"), &durationMs, -1,
                   3600000);
    addTotal(line, &totalBytes);
    line.addText("record", "file", QStringLiteral("Writes every byte received to this file."), &recordFile);
    payload.addTo(line);
    camera.addTo(line);
}

TcpLink::TcpLink(QTcpSocket *socket, const TcpOptions &options, QFile *record, QObject *parent)
    : QObject(parent)
    , m_socket(socket)
    , m_options(options)
    , m_record(record)
    , m_payload(options.payload.encoding, options.payload.seed)
    , m_left(options.totalBytes)
{
    m_socket->setParent(this);
    m_pace.setTimerType(Qt::PreciseTimer);
    if (options.act == TcpOptions::Act::Deaf)
        m_socket->setReadBufferSize(1); // the rest stays with the system, and then with the sender
    connect(m_socket, &QTcpSocket::readyRead, this, &TcpLink::readSome);
    connect(m_socket, &QTcpSocket::disconnected, this, &TcpLink::closed);
    connect(m_socket, &QTcpSocket::bytesWritten, this, [this] {
        countWritten();
        if (m_camera)
            m_camera->sendDue();
        sendMore();
    });
    QTimer::singleShot(options.startDelayMs, this, &TcpLink::start);
}

void TcpLink::start()
{
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_clock.start();
    m_sending = true;
    switch (m_options.act) {
    case TcpOptions::Act::Vanish:
        m_socket->abort();
        break;
    case TcpOptions::Act::Talk:
    case TcpOptions::Act::Drip:
        connect(&m_pace, &QTimer::timeout, this, &TcpLink::sendMessage);
        m_pace.start(m_options.periodMs);
        break;
    case TcpOptions::Act::Log:
        connect(&m_pace, &QTimer::timeout, this, &TcpLink::sendLogLine);
        m_pace.start(qMax(1, 1000 / m_options.linesPerSecond));
        break;
    case TcpOptions::Act::Camera:
        m_camera = new CameraStream(m_options.camera,
                                    {[this](const QByteArray &bytes) {
                                         put(bytes);
                                         m_socket->flush();
                                         countWritten();
                                     },
                                     [this] { return m_socket->bytesToWrite(); }},
                                    this);
        connect(m_camera, &CameraStream::finished, this, &TcpLink::finished);
        m_camera->start();
        break;
    case TcpOptions::Act::Flood:
        m_block = m_payload.take(blockBytes);
        sendMore();
        break;
    case TcpOptions::Act::HalfClose:
    case TcpOptions::Act::Reset:
        put(m_payload.take(int(qMax<qint64>(0, m_left))));
        break;
    default: // answers only
        break;
    }
}

void TcpLink::put(const QByteArray &bytes)
{
    m_handed += qMax<qint64>(0, m_socket->write(bytes)); // -1 when the link has gone
}

// Not by the number that bytesWritten() reports: it leaves out what is written
// while it is being emitted.
void TcpLink::countWritten()
{
    m_written = m_handed - m_socket->bytesToWrite();
}

void TcpLink::readSome()
{
    if (m_options.act == TcpOptions::Act::Deaf)
        return;
    const QByteArray bytes = m_socket->readAll();
    m_read += bytes.size();
    if (m_record->isOpen())
        m_record->write(bytes);
    if (m_camera)
        m_camera->receive(bytes);
    if (m_options.act == TcpOptions::Act::Echo || m_options.act == TcpOptions::Act::Log)
        put(bytes);
}

// When the system has accepted bytes: floods, or ends what was only to be sent.
void TcpLink::sendMore()
{
    if (!m_sending || m_socket->state() != QAbstractSocket::ConnectedState)
        return;
    if (m_options.act == TcpOptions::Act::HalfClose || m_options.act == TcpOptions::Act::Reset) {
        if (m_socket->bytesToWrite() == 0)
            endSending();
        return;
    }
    if (m_options.act != TcpOptions::Act::Flood)
        return;
    const bool over = m_options.durationMs >= 0 && m_clock.hasExpired(m_options.durationMs);
    while (m_left != 0 && !over && m_socket->bytesToWrite() < maxQueued) {
        const qint64 size = m_left < 0 ? blockBytes : qMin<qint64>(blockBytes, m_left);
        put(size == blockBytes ? m_block : m_block.left(int(size)));
        if (m_left > 0)
            m_left -= size;
    }
    if ((m_left == 0 || over) && m_socket->bytesToWrite() == 0)
        emit finished();
}

void TcpLink::sendMessage()
{
    const int size = m_options.act == TcpOptions::Act::Drip ? 1 : m_options.messageBytes;
    const qint64 now = m_left < 0 ? size : qMin<qint64>(size, m_left);
    if (now > 0)
        put(m_payload.take(int(now)));
    if (m_left > 0)
        m_left -= now;
    if (m_left == 0) {
        m_pace.stop();
        emit finished();
    }
}

void TcpLink::sendLogLine()
{
    const QString line = logLine(m_logLine++, m_clock.elapsed(), m_options.payload.seed);
    put(encoded(line + QStringLiteral("\r\n"), m_options.payload.encoding));
}

void TcpLink::endSending()
{
    m_sending = false;
    emit finished();
#ifdef Q_OS_UNIX
    const int descriptor = int(m_socket->socketDescriptor());
    if (m_options.act == TcpOptions::Act::HalfClose) {
        ::shutdown(descriptor, SHUT_WR);
        return;
    }
    const linger now = {1, 0}; // closing resets
    ::setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &now, sizeof now);
#endif
    m_socket->abort();
}

} // namespace Boardsim
