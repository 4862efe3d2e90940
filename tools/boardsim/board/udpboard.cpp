#include "udpboard.h"

#include <QNetworkDatagram>

namespace Boardsim {

static constexpr int cameraDatagram = 1400;

void UdpBoard::Options::addTo(CommandLine &line)
{
    line.addText("address", "ip", QStringLiteral("Own address, or the receiver's (default: 127.0.0.1)."),
                 &address);
    line.addNumber("net-port", "n", QStringLiteral("Own port, 0 for any"), &port, 0, 65535);
    line.addNumber("to-port", "n", QStringLiteral("The receiver's port"), &toPort, 0, 65535);
    line.addChoice(
        "act", QStringLiteral("What it does"), &act,
        {{"echo", Act::Echo}, {"silent", Act::Silent}, {"flood", Act::Flood}, {"camera", Act::Camera}});
    line.addNumber("rate", "n", QStringLiteral("flood: datagrams per second"), &datagramsPerSecond, 1,
                   100000);
    line.addNumber("message-bytes", "n", QStringLiteral("flood: size of a datagram"), &messageBytes, 0,
                   65507);
    line.addNumber("delay", "ms", QStringLiteral("Begins so long after the start"), &startDelayMs, 0,
                   3600000);
    addTotal(line, &totalBytes);
    line.addText("record", "file", QStringLiteral("Writes every byte received to this file."), &recordFile);
    payload.addTo(line);
    camera.addTo(line);
}

UdpBoard::UdpBoard(const Options &options, QObject *parent)
    : BoardBase(parent)
    , m_options(options)
    , m_record(options.recordFile)
    , m_payload(options.payload.encoding, options.payload.seed)
{
    connect(&m_socket, &QUdpSocket::readyRead, this, &UdpBoard::readSome);
    connect(&m_pace, &QTimer::timeout, this, &UdpBoard::sendDue);
    m_pace.setTimerType(Qt::PreciseTimer);
}

bool UdpBoard::begin(QString *error)
{
    if (!m_options.recordFile.isEmpty() && !m_record.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        *error = QStringLiteral("cannot write %1").arg(m_options.recordFile);
        return false;
    }
    // A sender of floods names the receiver, not an address of its own.
    const bool sends = m_options.act == Act::Flood;
    const QHostAddress own = sends ? QHostAddress(QHostAddress::Any) : QHostAddress(m_options.address);
    if (!m_socket.bind(own, quint16(m_options.port))) {
        *error = QStringLiteral("cannot bind: %1").arg(m_socket.errorString());
        return false;
    }
    emit happened(QStringLiteral("bound %1 %2").arg(own.toString()).arg(m_socket.localPort()));
    if (m_options.act == Act::Camera)
        startCamera();
    if (sends) {
        QTimer::singleShot(m_options.startDelayMs, this, [this] {
            m_clock.start();
            m_pace.start(1);
        });
    }
    return true;
}

// Each piece is a datagram.
void UdpBoard::startCamera()
{
    if (m_options.camera.chunkBytes == 0)
        m_options.camera.chunkBytes = cameraDatagram;
    const auto write = [this](const QByteArray &bytes) {
        m_written += qMax<qint64>(
            0, m_socket.writeDatagram(bytes, QHostAddress(m_options.address), quint16(m_options.toPort)));
    };
    m_camera = new CameraStream(m_options.camera, {write, [] { return qint64(0); }}, this);
    connect(m_camera, &CameraStream::finished, this, [this] { emit happened(QStringLiteral("finished")); });
    QTimer::singleShot(m_options.startDelayMs, m_camera, &CameraStream::start);
}

void UdpBoard::readSome()
{
    while (m_socket.hasPendingDatagrams()) {
        const QNetworkDatagram datagram = m_socket.receiveDatagram();
        ++m_datagrams;
        m_read += datagram.data().size();
        if (m_record.isOpen())
            m_record.write(datagram.data());
        if (m_camera)
            m_camera->receive(datagram.data());
        if (m_options.act == Act::Echo)
            m_written += qMax<qint64>(0, m_socket.writeDatagram(datagram.makeReply(datagram.data())));
    }
}

void UdpBoard::sendDue()
{
    const qint64 due = m_clock.elapsed() * m_options.datagramsPerSecond / 1000;
    while (m_datagrams < due && m_written != m_options.totalBytes) {
        const QByteArray message = m_payload.take(m_options.messageBytes);
        if (m_socket.writeDatagram(message, QHostAddress(m_options.address), quint16(m_options.toPort)) < 0)
            return; // no room now; the next time
        ++m_datagrams;
        m_written += message.size();
    }
    if (m_written == m_options.totalBytes) {
        m_pace.stop();
        emit happened(QStringLiteral("finished"));
    }
}

QString UdpBoard::statistics() const
{
    return QStringLiteral("written=%1 read=%2 datagrams=%3").arg(m_written).arg(m_read).arg(m_datagrams);
}

} // namespace Boardsim
