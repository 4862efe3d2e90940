#pragma once

// The camera assistant: receives the packets of a camera board, or raw JPEG
// pictures, from a serial port or the network, shows the pictures and reads and
// writes the board's registers. The links are LinkSession's, the received bytes
// CameraReceiver's, the pictures FrameShow's, the registers ImageFormatConfig's, recordings and playing them
// RecordingBar's.

#include "qtwidgetbase.h"
#include "streamfile.h"

#include <QAbstractSocket>
#include <QElapsedTimer>
#include <QTimer>

struct CameraEvent;
class CameraHealthPane;
class CameraLinkPanel;
class CameraPort;
class CameraReceiver;
class CameraStatusRow;
class CameraViewMenu;
class FormGroup;
class FieldMemory;
class FormPanel;
class FrameShow;
class ImageFormatConfig;
class ImageViewer;
class LinkSession;
class PictureActions;
class QCheckBox;
class QComboBox;
class RecordingBar;
struct CameraFrameData;

class CameraDebugWidget : public QtWidgetBase
{
    Q_OBJECT

public:
    static constexpr int pageIndex = 1; // in the window's stack

    explicit CameraDebugWidget(QWidget *parent = nullptr);
    ~CameraDebugWidget() override;

    QStringList counts() const override;
    void clearCounts() override;
    bool mayClose() override;
    void closeLinks() override;
    bool isClosed() const override;
    bool saveBeforeExit() override;
    void reloadSettings() override;

    qint64 frames() const; // counted, shown or not
    const FrameShow &frameShow() const { return *m_show; }

public slots:
    void SltSerialportChanged(QStringList serialports);
    void SltChangeProtocol(int index);
    void SltOpenLink();
    void SltChangeImageShow(int index); // of the device-count control

    // The one path of all received bytes; the name tells the senders apart.
    void SltRecvImageData(QString name, QByteArray byData);
    void SltRecvSerialportData(QByteArray byData);
    void SltReadFromTcpSocket();
    void SltReadyFromUdp();
    void SltTcpError(QAbstractSocket::SocketError error);

    // An empty value reads; texts are hexadecimal.
    void SltReadWriteRegister(QString strAddr, QString strValue, int regId);
    void SltCalculationRate();

private:
    void buildUi();
    QWidget *buildPanel();
    QWidget *buildWorkArea();
    void addChecks(FormGroup *group);
    void connectParts();
    void rememberFields();
    void addProfiles();

    void connectSession();
    void connectReceiver();
    void connectRecording();

    void endLink();
    void showFrame(int device, const CameraFrameData &frame);
    void showImage(const QString &sender, const CameraEvent &event);
    void showFormat(const CameraEvent &event);
    void showReply(const QString &sender, const CameraEvent &event);
    void showError(const QString &reason);
    void showCounts();
    void fold();
    StreamHead streamHead() const;
    void beginPlaying();
    void endPlaying();
    void readAs(const StreamHead &head);
    void playRecord(const StreamRecord &record);

    FormPanel *m_panel = nullptr;
    CameraLinkPanel *m_link = nullptr;
    ImageFormatConfig *m_config = nullptr;
    FieldMemory *m_memory = nullptr;
    QComboBox *m_deviceCount = nullptr;
    QCheckBox *m_jpegData = nullptr;
    QCheckBox *m_checkCrc = nullptr;
    QCheckBox *m_bigEndian = nullptr;
    QCheckBox *m_resynchronizes = nullptr;
    CameraViewMenu *m_view = nullptr;
    CameraStatusRow *m_status = nullptr;
    CameraHealthPane *m_health = nullptr;
    ImageViewer *m_viewer = nullptr;
    PictureActions *m_actions = nullptr;
    RecordingBar *m_recording = nullptr;

    LinkSession *m_session = nullptr;
    CameraPort *m_port = nullptr;
    CameraReceiver *m_receiver;
    FrameShow *m_show;

    QElapsedTimer m_sinceRate;
    QTimer m_rateTimer;
    StreamHead m_ownHead; // while another one is played
    qint64 m_framesAtRate = 0;
    qint64 m_errors = 0;
    qint64 m_sendCount = 0;
    qint64 m_recvCount = 0;
    qint64 m_recvAtRate = 0;
};
