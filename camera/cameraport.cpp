#include "cameraport.h"

#include "cameralinkpanel.h"
#include "portname.h"
#include "seriallink.h"

#include <QApplication>

#include <utility>

namespace {
// Nobody notices so short a delay.
constexpr int kPauseMs = 3;
constexpr int kMaxGatheredBytes = 256;
} // namespace

CameraPort::CameraPort(CameraLinkPanel *fields, QObject *parent)
    : QObject(parent)
    , m_fields(fields)
    , m_link(new SerialLink(this))
    , m_pause(this)
{
    m_link->setOpensLater(true);
    m_pause.setSingleShot(true);
    m_pause.setTimerType(Qt::PreciseTimer);
    connect(&m_pause, &QTimer::timeout, this, &CameraPort::passOn);
    connect(m_link, &SerialLink::failed, this,
            [this](const QString &text) { emit notify(Notice::error(text)); });
}

LinkSession::Transport CameraPort::transport()
{
    const auto name = [this] {
        const QString device = PortName::fromEntry(m_fields->serialPort());
        return device.isEmpty() ? m_fields->serialPort() : device;
    };
    LinkSession::Transport transport;
    transport.link = m_link;
    transport.open = [this] { return open(); };
    transport.subject = name;
    transport.stateText = [name] { return QStringLiteral("串口[%1]已打开").arg(name()); };
    transport.opened = QStringLiteral("串口[%1]打开成功!");
    transport.failed = QStringLiteral("串口[%1]打开失败!!!");
    transport.ended = Notice::error(QStringLiteral("当前串口已拔出，请重新打开!"));
    return transport;
}

bool CameraPort::open()
{
    SerialSettings settings;
    settings.name = PortName::fromEntry(m_fields->serialPort());
    settings.baudRate = m_fields->baudRate();
    const bool isOpen = m_link->open(settings);
    if (!isOpen)
        QApplication::beep();
    return isOpen;
}

CameraPort::Fault CameraPort::checkFields() const
{
    if (m_fields->serialPort().isEmpty())
        return {{}, QStringLiteral("当前系统未检测到任何串口，请重试!!!")};
    if (m_fields->baudRate() <= 0)
        return {QStringLiteral("波特率为空"), QStringLiteral("波特率为空或不是正整数，串口未打开！")};
    return {};
}

void CameraPort::setPorts(const QStringList &entries)
{
    m_fields->setSerialPorts(entries);
    if (!m_link->isOpen())
        return;
    for (const QString &entry : entries) {
        if (PortName::fromEntry(entry) == m_link->settings().name)
            return;
    }
    m_link->handleHangUp();
}

void CameraPort::gather(const QByteArray &bytes)
{
    m_gathered += bytes;
    if (m_gathered.size() >= kMaxGatheredBytes)
        passOn();
    else
        m_pause.start(kPauseMs);
}

void CameraPort::passOn()
{
    if (!m_gathered.isEmpty())
        emit received(std::exchange(m_gathered, {}));
}
