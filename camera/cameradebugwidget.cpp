#include "cameradebugwidget.h"

#include "cameralinkpanel.h"
#include "camerastatusrow.h"
#include "clientsocket.h"
#include "datagramsocket.h"
#include "formpanel.h"
#include "frameshow.h"
#include "imageformatconfig.h"
#include "imageviewer.h"
#include "peeraddress.h"
#include "pictureactions.h"
#include "qtmessagetip.h"
#include "qtserialport.h"
#include "readgate.h"
#include "tcpserver.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDebug>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int kRatePeriodMs = 1000;
constexpr int kTipMs = 2000;
constexpr qint64 kTimedFrame = 59; // whose time since the first is logged

bool isPacket(CameraEvent::Kind kind)
{
    return kind == CameraEvent::Image || kind == CameraEvent::Format || kind == CameraEvent::Register;
}

} // namespace

CameraDebugWidget::CameraDebugWidget(QWidget *parent)
    : QtWidgetBase(parent)
    , m_server(new TcpServer(this))
    , m_socket(new ClientSocket(this))
    , m_udp(new DatagramSocket(this))
    , m_serial(new QtSerialPort(this))
    , m_serialPause(this)
    , m_gate(new ReadGate([] { return qint64(0); }, this)) // what can't be shown is skipped
    , m_show(new FrameShow(this))
    , m_rateTimer(this)
{
    setObjectName(QStringLiteral("CameraDebugWidget"));
    buildUi();
    connectParts();
    connectLinks();
    showClosed();
    m_clock.start();
    m_sinceRate.start();
    m_rateTimer.start(kRatePeriodMs);
}

CameraDebugWidget::~CameraDebugWidget()
{
    blockSignals(true); // nobody is to be told any more
    // They outlive this part of the page, and talk when they end.
    for (QObject *link : std::initializer_list<QObject *>{m_server, m_socket, m_udp, m_serial})
        link->disconnect(this);
}

// ---- building

void CameraDebugWidget::buildUi()
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 8, 6);
    row->setSpacing(8);
    row->addWidget(buildPanel());
    row->addWidget(buildWorkArea(), 1);
    setPageKeys(m_link->openButton(), m_status->foldButton());
}

QWidget *CameraDebugWidget::buildPanel()
{
    m_panel = new FormPanel(this);
    m_panel->setObjectName(QStringLiteral("cameraConfigPanel"));
    // Made in the order in which the Tab key goes through them.
    m_link = new CameraLinkPanel(m_panel);
    m_panel->addWidget(m_link);
    m_config = new ImageFormatConfig(m_panel);
    addChecks(m_config->formatGroup());
    m_panel->addWidget(m_config);
    return m_panel;
}

// How the data of the pictures are taken.
void CameraDebugWidget::addChecks(FormGroup *group)
{
    m_jpegData = new QCheckBox(QStringLiteral("JPEG数据"), group);
    m_jpegData->setObjectName(QStringLiteral("checkJpegData"));
    m_jpegData->setToolTip(QStringLiteral("数据是不带数据包头的JPEG图像流"));
    m_checkCrc = new QCheckBox(QStringLiteral("CRC-16"), group);
    m_checkCrc->setObjectName(QStringLiteral("checkCrc16"));
    m_checkCrc->setToolTip(QStringLiteral("勾选后丢弃校验错误的图像，否则仍然显示"));
    m_bigEndian = new QCheckBox(QStringLiteral("数据大端"), group);
    m_bigEndian->setObjectName(QStringLiteral("checkBigEndian"));
    m_bigEndian->setToolTip(QStringLiteral("RGB565像素的高字节在前；YUV422为UYVY，不勾选时为YUYV"));
    QHBoxLayout *line = group->addLine();
    for (QCheckBox *check : {m_jpegData, m_checkCrc, m_bigEndian})
        line->addWidget(check);
    line->addStretch();
}

QWidget *CameraDebugWidget::buildWorkArea()
{
    auto *area = new QWidget(this);
    m_status = new CameraStatusRow(area);
    m_viewer = new ImageViewer(area);
    auto *countLabel = new QLabel(QStringLiteral("设备数:"), area);
    m_deviceCount = new QComboBox(area);
    m_deviceCount->setObjectName(QStringLiteral("comboDeviceCount"));
    m_deviceCount->setAccessibleName(QStringLiteral("设备数"));
    m_deviceCount->setToolTip(QStringLiteral("同时显示几个设备的图像"));
    m_deviceCount->addItems({QStringLiteral("1"), QStringLiteral("2")});
    countLabel->setBuddy(m_deviceCount);
    m_actions = new PictureActions(m_viewer, area);
    auto *bottom = new QHBoxLayout;
    bottom->setSpacing(4);
    bottom->addWidget(countLabel);
    bottom->addWidget(m_deviceCount);
    bottom->addWidget(m_actions, 1);
    auto *column = new QVBoxLayout(area);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addWidget(m_status);
    column->addWidget(m_viewer, 1);
    column->addLayout(bottom);
    return area;
}

void CameraDebugWidget::connectParts()
{
    connect(m_status->foldButton(), &QPushButton::clicked, this, &CameraDebugWidget::fold);
    connect(m_deviceCount, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &CameraDebugWidget::SltChangeImageShow);
    connect(m_jpegData, &QCheckBox::toggled, this, [this] { m_streams.clear(); });
    connect(m_actions, &PictureActions::notify, this, &CameraDebugWidget::notify);
    connect(m_config, &ImageFormatConfig::signalReadWriteRegister, this,
            &CameraDebugWidget::SltReadWriteRegister);
    connect(m_config, &ImageFormatConfig::notify, this, &CameraDebugWidget::notify);
    connect(m_show, &FrameShow::pictureReady, this, [this](int device, const QImage &picture) {
        m_viewer->setImage(device, QPixmap::fromImage(picture));
    });
    connect(m_show, &FrameShow::undecodable, this, [this](int device) {
        raiseError(QStringLiteral("设备[%1]的数据无法按当前格式解码").arg(device + 1));
    });
    connect(&m_rateTimer, &QTimer::timeout, this, &CameraDebugWidget::SltCalculationRate);
}

void CameraDebugWidget::fold()
{
    const bool hide = m_panel->isVisibleTo(this);
    m_panel->setVisible(!hide);
    m_status->foldButton()->setText(hide ? QStringLiteral("显示配置界面") : QStringLiteral("隐藏配置界面"));
}

void CameraDebugWidget::SltChangeImageShow(int index)
{
    m_viewer->setDisplayCount(index + 1);
    m_actions->setTwo(index == 1);
}

// ---- receiving

void CameraDebugWidget::noteLoss(CameraStreams::Stream &stream)
{
    const QString why = m_streams.countLoss(stream);
    if (!why.isEmpty())
        raiseError(why);
}

void CameraDebugWidget::SltRecvImageData(QString name, QByteArray byData)
{
    m_recvCount += byData.size();
    m_gate->taken(byData.size());
    CameraStreams::Stream &stream = m_streams.of(name, m_link->protocol() == CameraLinkPanel::Udp);
    if (m_streams.takeForgotten())
        notify(Notice::error(
            QStringLiteral("UDP发送方超过%1个，图像可能不完整！").arg(CameraStreams::maxDatagramSenders)));
    if (m_jpegData->isChecked()) {
        stream.jpeg.append(byData);
        takeJpegs(stream);
    } else {
        stream.packets.append(byData, m_clock.elapsed());
        noteLoss(stream);
        takePackets(name, stream);
    }
}

void CameraDebugWidget::takePackets(const QString &sender, CameraStreams::Stream &stream)
{
    CameraEvent event;
    while (stream.packets.next(&event, m_config->valueLength())) {
        if (event.kind == CameraEvent::ImpossibleLength)
            raiseError(QStringLiteral("数据包长度异常，已丢弃"));
        stream.lossTold = stream.lossTold || event.kind == CameraEvent::ImpossibleLength;
        noteLoss(stream);
        switch (event.kind) {
        case CameraEvent::ImageBegins:
            startElapsed();
            break;
        case CameraEvent::Image:
            actOnImage(event);
            break;
        case CameraEvent::Format:
            actOnFormat(event);
            break;
        case CameraEvent::Register:
            actOnRegister(sender, event);
            break;
        case CameraEvent::WrongLength:
            QtMessageTip::showTip(QStringLiteral("当前数据长度与配置不符合！"), kTipMs);
            break;
        case CameraEvent::NoHeader:
            qDebug().noquote() << "head" << QByteArray(CameraFrame::magic, CameraFrame::magicSize).toHex()
                               << event.data.toHex();
            break;
        case CameraEvent::ImpossibleLength:
            break;
        case CameraEvent::Resynchronized:
            notify(Notice::information(QStringLiteral("图像数据失步，已重新同步")));
            break;
        }
        stream.lossTold = stream.lossTold && !isPacket(event.kind);
    }
    noteLoss(stream);
}

void CameraDebugWidget::takeJpegs(CameraStreams::Stream &stream)
{
    QByteArray picture;
    bool more = true;
    while (more) {
        more = stream.jpeg.next(&picture);
        noteLoss(stream);
        if (stream.jpeg.takeOverflow())
            raiseError(QStringLiteral("JPEG图像没有结束标记，已丢弃"));
        if (more || stream.jpeg.hasStart())
            startElapsed();
        if (!more)
            break;
        m_show->add(0, {picture, std::nullopt, false});
        countFrame();
    }
}

void CameraDebugWidget::startElapsed()
{
    if (m_frames == 0 && !m_sinceFirst.isValid())
        m_sinceFirst.start();
}

void CameraDebugWidget::actOnImage(const CameraEvent &event)
{
    if (!event.checksumRight) {
        raiseError(QStringLiteral("设备[%1]的图像数据校验错误").arg(event.device + 1));
        if (m_checkCrc->isChecked())
            return;
    }
    const ImageRecord &record = m_config->record(event.device);
    if (m_frames == kTimedFrame &&
        (record.format == ImageRecord::Rgb565 || record.format == ImageRecord::Bmp))
        qDebug() << m_sinceFirst.elapsed() << "ms";
    m_show->add(event.device, {event.data, record, m_bigEndian->isChecked()});
    countFrame();
}

void CameraDebugWidget::countFrame()
{
    ++m_frames;
}

void CameraDebugWidget::actOnFormat(const CameraEvent &event)
{
    m_config->setRecord(event.device, {event.format, event.width, event.height});
    notify(Notice::information(QStringLiteral("设备[%1]修改图像格式[%2]成功: 宽度: %3像素,高度：%4像素.")
                                   .arg(event.device + 1)
                                   .arg(ImageRecord::formatName(event.format))
                                   .arg(event.width)
                                   .arg(event.height)));
}

// Datagrams may come from anywhere. A board may answer from another port than the
// one it is asked at, unless that one is known to send.
bool CameraDebugWidget::isAskedBoard(const QString &sender) const
{
    if (m_link->protocol() != CameraLinkPanel::Udp)
        return true;
    const QHostAddress address = m_link->destinationAddress();
    const QString host = PeerAddress::text(address) + QLatin1Char(':');
    const QString asked = host + QString::number(m_link->destinationPort());
    if (m_streams.contains(asked))
        return sender == asked;
    const bool isOne = !address.isBroadcast() && !address.isMulticast() &&
                       !(address.protocol() == QAbstractSocket::IPv4Protocol &&
                         (address.toIPv4Address() & 0xFF) == 0xFF); // a network's broadcast address
    return !isOne || sender.startsWith(host);
}

void CameraDebugWidget::actOnRegister(const QString &sender, const CameraEvent &event)
{
    if (!isAskedBoard(sender))
        return;
    quint32 value = 0;
    for (int i = event.data.size() - 1; i >= 0; --i)
        value = value << 8 | static_cast<uchar>(event.data.at(i));
    m_config->takeReply(event.device, event.address, event.status, value, event.data.size());
    QString text;
    if (event.status == 1)
        text = QStringLiteral("数据包接收错误!");
    else if (event.status == 2)
        text = QStringLiteral("没有这个寄存器!");
    else if (event.status != 0)
        text = QStringLiteral("寄存器读取错误，错误代码[%1]!").arg(event.status);
    if (!text.isEmpty())
        QtMessageTip::showTip(text, kTipMs);
}

void CameraDebugWidget::raiseError(const QString &why)
{
    m_status->showErrors(++m_errors, why);
}

// ---- registers

void CameraDebugWidget::SltReadWriteRegister(QString strAddr, QString strValue, int regId)
{
    const int addressLength = m_config->addressLength();
    const int valueLength = m_config->valueLength();
    if (addressLength < 1 || addressLength > CameraFrame::longestValue) {
        QtMessageTip::showTip(QStringLiteral("寄存器地址长度设置错误[1~4]"), kTipMs);
        m_config->stopRequests();
        return;
    }
    if (!strValue.isEmpty() && (valueLength < 1 || valueLength > CameraFrame::longestValue)) {
        QtMessageTip::showTip(QStringLiteral("寄存器值长度设置错误[1~4]"), kTipMs);
        m_config->stopRequests();
        return;
    }
    bool isAddress = false;
    bool isValue = true;
    const quint32 address = strAddr.toUInt(&isAddress, 16);
    const quint32 value = strValue.isEmpty() ? 0 : strValue.toUInt(&isValue, 16);
    if (!isAddress || !isValue)
        return;
    const auto device = static_cast<quint8>(m_config->device());
    const qint64 sent =
        send(strValue.isEmpty()
                 ? CameraFrame::readRequest(device, static_cast<quint16>(regId), address, addressLength)
                 : CameraFrame::writeRequest(device, address, addressLength, value, valueLength));
    if (sent == 0)
        m_config->stopRequests();
    m_sendCount += sent;
    emit signalRefresCounts(pageIndex);
}

// ---- counts

void CameraDebugWidget::SltCalculationRate()
{
    const double seconds = static_cast<double>(qMax<qint64>(1, m_sinceRate.restart())) / 1000;
    m_status->showRates(static_cast<double>(m_frames - m_framesAtRate) / seconds,
                        static_cast<double>(m_recvCount - m_recvAtRate) / seconds);
    m_framesAtRate = m_frames;
    m_recvAtRate = m_recvCount;
    showCounts();
}

void CameraDebugWidget::showCounts()
{
    m_status->showFrames(
        m_frames, {m_show->skipped(), m_show->unusable(), m_streams.partialFrames(), m_streams.lostBytes()});
    emit signalRefresCounts(pageIndex);
}

QStringList CameraDebugWidget::counts() const
{
    return {QString::number(m_sendCount), QString::number(m_recvCount)};
}

// The rates go on from the numbers of the last period.
void CameraDebugWidget::clearCounts()
{
    m_framesAtRate -= m_frames;
    m_recvAtRate -= m_recvCount;
    m_frames = 0;
    m_recvCount = 0;
    m_sendCount = 0;
    m_errors = 0;
    m_streams.clearCounts();
    m_sinceFirst.invalidate();
    m_show->clearCounts();
    m_status->showErrors(0, {});
    showCounts();
}

bool CameraDebugWidget::mayClose()
{
    return m_config->mayClose();
}

void CameraDebugWidget::reloadSettings()
{
    m_config->loadDefaults();
    if (!isLinkOpen()) // else its fields are the ones shown
        m_link->loadDefaults();
}
