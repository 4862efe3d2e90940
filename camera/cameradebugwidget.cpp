#include "cameradebugwidget.h"

#include "camerahealthpane.h"
#include "cameralinkpanel.h"
#include "cameraport.h"
#include "camerareceiver.h"
#include "camerastatusrow.h"
#include "cameraviewmenu.h"
#include "fieldmemory.h"
#include "formpanel.h"
#include "frameshow.h"
#include "histogrampane.h"
#include "imageformatconfig.h"
#include "imageviewer.h"
#include "linksession.h"
#include "pictureactions.h"
#include "profilebutton.h"
#include "qtmessagetip.h"
#include "recordingbar.h"
#include "settings.h"

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
constexpr int kFinishMs = 5000;    // for files at the end of the program
constexpr qint64 kTimedFrame = 59; // whose time since the first is logged

const auto kClosedHint = QStringLiteral("选择协议并打开后，收到的图像将显示在这里");
const auto kFromSerial = QStringLiteral("串口"); // the sender's name

} // namespace

CameraDebugWidget::CameraDebugWidget(QWidget *parent)
    : QtWidgetBase(parent)
    , m_receiver(new CameraReceiver(this))
    , m_show(new FrameShow(this))
    , m_rateTimer(this)
{
    setObjectName(QStringLiteral("CameraDebugWidget"));
    buildUi();
    // No backlog: a picture that can't be shown in time is skipped.
    m_session = new LinkSession(
        m_link, m_status->state(), QStringLiteral("摄像头调试助手"), [] { return qint64(0); }, this);
    m_port = new CameraPort(m_link, m_session);
    m_session->addTransport(m_port->transport());
    connectParts();
    connectSession();
    connectReceiver();
    connectRecording();
    rememberFields();
    addProfiles();
    SltChangeProtocol(m_link->protocol());
    m_sinceRate.start();
    m_rateTimer.start(kRatePeriodMs);
}

CameraDebugWidget::~CameraDebugWidget()
{
    blockSignals(true);
    m_session->disconnect(this); // it outlives this part of the page
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

// How the data of the pictures are read.
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
    m_resynchronizes = new QCheckBox(QStringLiteral("逐字节同步"), area);
    m_resynchronizes->setObjectName(QStringLiteral("checkResynchronize"));
    m_resynchronizes->setToolTip(
        QStringLiteral("数据出错后逐字节查找下一个包头，每处错误最多损失一帧；只用于带数据包头的数据"));
    m_recording = new RecordingBar(area);
    m_actions = new PictureActions(m_viewer, area);
    auto *bottom = new QHBoxLayout;
    bottom->setSpacing(4);
    bottom->addWidget(countLabel);
    bottom->addWidget(m_deviceCount);
    bottom->addSpacing(8);
    bottom->addWidget(m_resynchronizes);
    m_view = new CameraViewMenu(m_viewer, area);
    bottom->addWidget(m_view);
    bottom->addWidget(m_recording->button());
    bottom->addWidget(m_actions, 1);
    auto *column = new QVBoxLayout(area);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    m_health = new CameraHealthPane(m_receiver, area);
    auto *histogram = new HistogramPane(m_viewer, area);
    connect(m_view, &CameraViewMenu::histogramWanted, histogram, &QWidget::setVisible);
    m_view->load();
    column->addWidget(m_status);
    column->addWidget(m_health);
    column->addWidget(m_viewer, 1);
    column->addWidget(m_recording);
    column->addWidget(histogram);
    column->addLayout(bottom);
    return area;
}

void CameraDebugWidget::connectParts()
{
    connect(m_status->foldButton(), &QPushButton::clicked, this, &CameraDebugWidget::fold);
    connect(m_deviceCount, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &CameraDebugWidget::SltChangeImageShow);
    connect(m_link, &CameraLinkPanel::openClicked, this, &CameraDebugWidget::SltOpenLink);
    connect(m_link, &CameraLinkPanel::protocolChanged, this, &CameraDebugWidget::SltChangeProtocol);
    connect(m_jpegData, &QCheckBox::toggled, m_receiver, &CameraReceiver::setRawJpeg);
    connect(m_checkCrc, &QCheckBox::toggled, m_receiver, &CameraReceiver::setDropBadChecksums);
    connect(m_resynchronizes, &QCheckBox::toggled, m_receiver, &CameraReceiver::setResynchronizes);
    connect(m_health, &CameraHealthPane::resynchronizeWanted, this,
            [this] { m_resynchronizes->setChecked(true); });
    connect(m_health, &CameraHealthPane::notify, this, &CameraDebugWidget::notify);
    connect(m_actions, &PictureActions::notify, this, &CameraDebugWidget::notify);
    connect(m_config, &ImageFormatConfig::signalReadWriteRegister, this,
            &CameraDebugWidget::SltReadWriteRegister);
    connect(m_config, &ImageFormatConfig::recordEdited, m_receiver, &CameraReceiver::forgetAnnounced);
    connect(m_config, &ImageFormatConfig::notify, this, &CameraDebugWidget::notify);
    connect(m_show, &FrameShow::pictureReady, this,
            [this](int device, const QImage &picture, const CameraFrameData &frame) {
                m_viewer->setImage(device, QPixmap::fromImage(picture, Qt::NoOpaqueDetection),
                                   [frame](const QPoint &pixel) { return FrameShow::rawText(frame, pixel); });
                m_receiver->countShown(frame.sender, device);
            });
    connect(m_show, &FrameShow::skipping, this,
            [this](int device, const QString &sender) { m_receiver->countSkipped(sender, device); });
    connect(m_show, &FrameShow::undecodable, this, [this](int device, const CameraFrameData &frame) {
        m_receiver->countUndecodable(frame.sender, device, frame.offset, frame.data);
        showError(QStringLiteral("设备[%1]的数据无法按当前格式解码").arg(device + 1));
    });
    connect(&m_rateTimer, &QTimer::timeout, this, &CameraDebugWidget::SltCalculationRate);
}

void CameraDebugWidget::rememberFields()
{
    Settings::CameraPage &kept = Settings::instance().cameraPage;
    m_memory = new FieldMemory(this);
    m_memory->add(m_deviceCount, &kept.deviceCount);
    m_memory->add(m_jpegData, &kept.jpegData);
    m_memory->add(m_checkCrc, &kept.checkCrc);
    m_memory->add(m_bigEndian, &kept.bigEndian);
    m_memory->add(m_resynchronizes, &kept.resynchronizes);
    m_memory->add(m_health->button(), &kept.health);
    m_config->remember(m_memory);
}

void CameraDebugWidget::addProfiles()
{
    auto *profiles = new ProfileButton(
        QStringLiteral("camera"), {{QStringLiteral("Camera"), QStringLiteral("CameraPage")}, {}}, m_status);
    m_status->addTool(profiles);
    m_status->addTool(m_health->button());
    profiles->setRefusal([this] {
        return !m_session->isClosed()               ? QStringLiteral("请先断开连接")
               : m_recording->player()->isPlaying() ? QStringLiteral("请先停止回放")
                                                    : QString();
    });
    connect(profiles, &ProfileButton::collecting, m_link, &CameraLinkPanel::saveDefaults);
    connect(profiles, &ProfileButton::chosen, this, &CameraDebugWidget::reloadSettings);
    connect(profiles, &ProfileButton::notify, this, &CameraDebugWidget::notify);
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
    m_recording->setDeviceCount(index + 1);
}

// ---- the link

void CameraDebugWidget::connectSession()
{
    connect(m_session, &LinkSession::notify, this, &CameraDebugWidget::notify);
    connect(m_session, &LinkSession::joined, m_session, &LinkSession::notifyJoined);
    connect(m_session, &LinkSession::left, this, [this](const QString &name, const QString &reason) {
        const bool inOrder = reason.isEmpty() && m_session->isOpen(); // and was not closed here
        m_recording->recorder()->addEnd(name, inOrder);
        if (inOrder)
            m_receiver->finish(name);
        else
            m_receiver->forget(name);
        if (m_link->protocol() == CameraLinkPanel::TcpServer)
            m_session->notifyLeft(name);
    });
    connect(m_session, &LinkSession::received, this, [this](const QString &sender, const QByteArray &bytes) {
        if (m_link->protocol() == CameraLinkPanel::Serial)
            m_port->gather(bytes);
        else
            SltRecvImageData(sender, bytes);
    });
    connect(m_session, &LinkSession::handedOver, this, [this](qint64 bytes) {
        m_sendCount += bytes;
        emit signalRefresCounts(pageIndex);
    });
    connect(m_session, &LinkSession::opening, this, [this] { m_link->setOpenState(true); });
    connect(m_session, &LinkSession::opened, this, [this] {
        m_errors = 0;
        m_status->showErrors(0, {});
        m_link->saveDefaults();
        m_viewer->setHint(QStringLiteral("已打开，正在等待图像数据"));
    });
    // Later: a reply that has already arrived is read while the link begins to close.
    connect(m_session, &LinkSession::closing, m_config, &ImageFormatConfig::stopRequests,
            Qt::QueuedConnection);
    connect(m_session, &LinkSession::closed, this, &CameraDebugWidget::endLink);
    connect(m_session, &LinkSession::closedHere, this,
            [this] { notify(Notice::information(QStringLiteral("摄像头连接已关闭！"))); });
    connect(m_session, &LinkSession::socketError, this, &CameraDebugWidget::SltTcpError);
    connect(m_port, &CameraPort::received, this, &CameraDebugWidget::SltRecvSerialportData);
    connect(m_port, &CameraPort::notify, this, &CameraDebugWidget::notify);
}

// The bytes that have arrived are reported by now.
void CameraDebugWidget::endLink()
{
    m_port->passOn();
    m_recording->recorder()->addEnd({}, false);
    m_receiver->forget();
    m_config->stopRequests();
    m_viewer->setHint(kClosedHint);
    if (isClosed())
        emit signalClosed();
}

void CameraDebugWidget::SltChangeProtocol(int)
{
    m_session->changeProtocol();
    m_viewer->setHint(kClosedHint);
}

void CameraDebugWidget::SltOpenLink()
{
    const bool opens = m_session->link()->state() == Link::State::Closed;
    const CameraPort::Fault fault =
        opens && m_link->protocol() == CameraLinkPanel::Serial ? m_port->checkFields() : CameraPort::Fault();
    if (fault.notice.isEmpty())
        return m_session->toggle();
    if (!fault.state.isEmpty())
        m_session->showFailed(fault.state);
    notify(Notice::error(fault.notice));
}

void CameraDebugWidget::closeLinks()
{
    m_recording->player()->stop();
    m_session->close();
    m_recording->recorder()->stop();
}

bool CameraDebugWidget::isClosed() const
{
    return m_session->isClosed() && m_recording->recorder()->isFinished();
}

// At a log-off nothing is closed before.
bool CameraDebugWidget::saveBeforeExit()
{
    if (!m_recording->recorder()->waitForFinished(kFinishMs))
        qWarning() << "a recording of the camera page is not complete";
    return true;
}

void CameraDebugWidget::SltReadFromTcpSocket()
{
    m_session->readPending();
}

void CameraDebugWidget::SltReadyFromUdp()
{
    m_session->readPending();
}

void CameraDebugWidget::SltTcpError(QAbstractSocket::SocketError error)
{
    qDebug() << m_session->socketErrorString() << "Socket error" << error;
}

void CameraDebugWidget::SltRecvSerialportData(QByteArray byData)
{
    SltRecvImageData(kFromSerial, byData);
}

void CameraDebugWidget::SltSerialportChanged(QStringList serialports)
{
    m_port->setPorts(serialports);
}

// ---- receiving

void CameraDebugWidget::connectReceiver()
{
    connect(m_receiver, &CameraReceiver::image, this, &CameraDebugWidget::showImage);
    connect(m_receiver, &CameraReceiver::jpeg, this,
            [this](const QString &sender, const QByteArray &file, qint64 offset) {
                showFrame(0, {file, std::nullopt, false, sender, offset});
            });
    connect(m_receiver, &CameraReceiver::format, this, &CameraDebugWidget::showFormat);
    connect(m_receiver, &CameraReceiver::registerReply, this, &CameraDebugWidget::showReply);
    connect(m_receiver, &CameraReceiver::wrongReplyLength, this,
            [] { QtMessageTip::showTip(QStringLiteral("当前数据长度与配置不符合！"), kTipMs); });
    connect(m_receiver, &CameraReceiver::faulty, this, &CameraDebugWidget::showError);
    connect(m_receiver, &CameraReceiver::notify, this, &CameraDebugWidget::notify);
}

void CameraDebugWidget::SltRecvImageData(QString name, QByteArray byData)
{
    m_recvCount += byData.size();
    const bool isDatagram = m_link->protocol() == CameraLinkPanel::Udp;
    m_recording->recorder()->addBytes(name, byData, isDatagram);
    m_receiver->receive(name, byData, isDatagram, m_config->valueLength());
}

void CameraDebugWidget::showFrame(int device, const CameraFrameData &frame)
{
    m_recording->recorder()->addFrame(device, frame);
    m_show->add(device, frame);
}

// By the format that its sender has announced. A sender that has announced none, as
// one that has connected again, sends in the format of the panel. The user may have
// chosen another than either.
void CameraDebugWidget::showImage(const QString &sender, const CameraEvent &event)
{
    const CameraEvent *const format = m_receiver->announced(sender, event.device);
    const ImageRecord declared =
        format ? ImageRecord{format->format, format->width, format->height} : m_config->record(event.device);
    const ImageRecord record = declared.readAs(Settings::instance().cameraPage.pictureFormat);
    if (frames() == kTimedFrame &&
        (record.format == ImageRecord::Rgb565 || record.format == ImageRecord::Bmp))
        qDebug() << m_receiver->sinceFirstMs() << "ms";
    showFrame(event.device, {event.data, record, m_bigEndian->isChecked(), sender, event.offset});
}

void CameraDebugWidget::showFormat(const CameraEvent &event)
{
    m_config->setRecord(event.device, {event.format, event.width, event.height});
    notify(Notice::information(QStringLiteral("设备[%1]修改图像格式[%2]成功: 宽度: %3像素,高度：%4像素.")
                                   .arg(event.device + 1)
                                   .arg(ImageRecord::formatName(event.format))
                                   .arg(event.width)
                                   .arg(event.height)));
}

void CameraDebugWidget::showReply(const QString &sender, const CameraEvent &event)
{
    if (m_recording->player()->isPlaying())
        return; // nothing was asked now
    // Datagrams may come from anywhere.
    if (m_link->protocol() == CameraLinkPanel::Udp &&
        !m_receiver->mayAnswer(sender, m_link->destinationAddress(), m_link->destinationPort()))
        return;
    quint32 value = 0;
    for (int i = event.data.size() - 1; i >= 0; --i)
        value = value << 8 | static_cast<uchar>(event.data.at(i));
    if (!m_config->addReply(sender, event.device, event.address, event.status, value, event.data.size()))
        return; // of a device that was not asked
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

void CameraDebugWidget::showError(const QString &why)
{
    m_status->showErrors(++m_errors, why);
}

// ---- recordings

void CameraDebugWidget::connectRecording()
{
    m_recording->setHead([this] { return streamHead(); });
    m_recording->setPlayRefusal(
        [this] { return m_session->isClosed() ? QString() : QStringLiteral("请先断开连接"); });
    connect(m_recording, &RecordingBar::notify, this, &CameraDebugWidget::notify);
    connect(m_recording, &RecordingBar::playing, this, &CameraDebugWidget::beginPlaying);
    connect(m_recording->player(), &StreamPlayer::played, this, &CameraDebugWidget::playRecord);
    connect(m_recording->player(), &StreamPlayer::ended, this, &CameraDebugWidget::endPlaying);
    connect(m_session, &LinkSession::opening, m_recording->player(), &StreamPlayer::stop);
    connect(m_recording->recorder(), &CameraRecorder::changed, this, [this] {
        if (m_recording->recorder()->isFinished() && isClosed())
            emit signalClosed();
    });
}

StreamHead CameraDebugWidget::streamHead() const
{
    StreamHead head;
    head.isRawJpeg = m_jpegData->isChecked();
    head.isBigEndian = m_bigEndian->isChecked();
    head.valueLength = static_cast<quint8>(m_config->valueLength());
    head.formats = {m_config->record(0), m_config->record(1)};
    return head;
}

// The page reads the recorded bytes as it did when they came.
void CameraDebugWidget::beginPlaying()
{
    m_ownHead = streamHead();
    readAs(m_recording->player()->head());
    m_receiver->forget();
}

// A board that comes next sends as the user has set it before.
void CameraDebugWidget::endPlaying()
{
    m_receiver->forget();
    m_recording->recorder()->setPlayedTime(std::nullopt);
    readAs(m_ownHead);
}

void CameraDebugWidget::readAs(const StreamHead &head)
{
    m_jpegData->setChecked(head.isRawJpeg);
    m_bigEndian->setChecked(head.isBigEndian);
    for (const int device : {0, 1})
        m_config->setRecord(device, head.formats.at(static_cast<size_t>(device)));
}

void CameraDebugWidget::playRecord(const StreamRecord &record)
{
    m_recvCount += record.bytes.size();
    m_recording->recorder()->setPlayedTime(record.timeUs);
    if (record.kind == StreamRecord::Bytes)
        m_receiver->receive(record.sender, record.bytes, record.isDatagram,
                            m_recording->player()->head().valueLength);
    else if (record.kind == StreamRecord::Ended)
        m_receiver->finish(record.sender);
    else if (record.sender.isEmpty())
        m_receiver->forget();
    else
        m_receiver->forget(record.sender);
}

// ---- registers

void CameraDebugWidget::SltReadWriteRegister(QString strAddr, QString strValue, int regId)
{
    const int addressLength = m_config->addressLength();
    const int valueLength = m_config->valueLength();
    QString fault;
    if (addressLength < 1 || addressLength > CameraFrame::maxValueBytes)
        fault = QStringLiteral("寄存器地址长度设置错误[1~4]");
    else if (!strValue.isEmpty() && (valueLength < 1 || valueLength > CameraFrame::maxValueBytes))
        fault = QStringLiteral("寄存器值长度设置错误[1~4]");
    if (!fault.isEmpty()) {
        QtMessageTip::showTip(fault, kTipMs);
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
    const qint64 sent = m_session->send(
        strValue.isEmpty()
            ? CameraFrame::readRequest(device, static_cast<quint16>(regId), address, addressLength)
            : CameraFrame::writeRequest(device, address, addressLength, value, valueLength));
    if (sent > 0)
        return;
    m_config->stopRequests();
    notify(Notice::error(QStringLiteral("没有已连接的摄像头，数据未发送！")));
}

// ---- counts

void CameraDebugWidget::SltCalculationRate()
{
    const double seconds = static_cast<double>(qMax<qint64>(1, m_sinceRate.restart())) / 1000;
    m_status->showRates(static_cast<double>(frames() - m_framesAtRate) / seconds,
                        static_cast<double>(m_recvCount - m_recvAtRate) / seconds);
    m_framesAtRate = frames();
    m_recvAtRate = m_recvCount;
    if (m_session->isOpen())
        m_receiver->tickHealth();
    m_health->refresh(m_session->isOpen() && !m_jpegData->isChecked() && !m_resynchronizes->isChecked());
    showCounts();
}

void CameraDebugWidget::showCounts()
{
    m_status->showFrames(frames(),
                         {m_show->skipped(), m_show->unusable(), m_receiver->health().total().cutShort,
                          m_receiver->health().total().lostBytes});
    emit signalRefresCounts(pageIndex);
}

qint64 CameraDebugWidget::frames() const
{
    return m_receiver->frames();
}

QStringList CameraDebugWidget::counts() const
{
    return {QString::number(m_sendCount), QString::number(m_recvCount)};
}

// The rates go on from the numbers of the last period.
void CameraDebugWidget::clearCounts()
{
    m_framesAtRate -= frames();
    m_recvAtRate -= m_recvCount;
    m_recvCount = 0;
    m_sendCount = 0;
    m_errors = 0;
    m_receiver->clearCounts();
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
    m_memory->load();
    m_view->load();
    m_recording->load();
    if (m_session->isClosed()) // else its fields are the ones shown
        m_link->loadDefaults();
}
