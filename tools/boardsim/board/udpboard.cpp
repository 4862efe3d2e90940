#include "udpboard.h"

#include <QNetworkDatagram>

namespace Boardsim {

static constexpr int cameraDatagram = 1400;

UdpBoard::UdpBoard(const Options &options, QObject *parent)
    : BoardBase(parent)
    , m_options(options)
    , m_record(options.recordFile)
    , m_payload(options.encoding, options.seed)
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
    const bool sends = m_options.act == Options::Act::Flood;
    const QHostAddress own = sends ? QHostAddress(QHostAddress::Any) : QHostAddress(m_options.address);
    if (!m_socket.bind(own, quint16(m_options.netPort))) {
        *error = QStringLiteral("cannot bind: %1").arg(m_socket.errorString());
        return false;
    }
    emit happened(QStringLiteral("bound %1 %2").arg(own.toString()).arg(m_socket.localPort()));
    if (m_options.act == Options::Act::Camera)
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
        if (m_options.act == Options::Act::Echo)
            m_written += qMax<qint64>(0, m_socket.writeDatagram(datagram.makeReply(datagram.data())));
    }
}

void UdpBoard::sendDue()
{
    const qint64 due = m_clock.elapsed() * m_options.linesPerSecond / 1000;
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
