#pragma once

// The camera assistant: takes the packets of a camera board, or raw JPEG
// pictures, from a serial port or the network, shows the pictures and reads and
// writes the board's registers. Owns the links and the streams; what a picture
// is made of is FrameShow's, the registers are ImageFormatConfig's.

#include "camerastreams.h"
#include "qtwidgetbase.h"

#include <QAbstractSocket>
#include <QElapsedTimer>
#include <QTimer>

class CameraLinkPanel;
class CameraStatusRow;
class ClientSocket;
class DatagramSocket;
class FormGroup;
class FormPanel;
class FrameShow;
class ImageFormatConfig;
class ImageViewer;
class PictureActions;
class QCheckBox;
class QComboBox;
class QtSerialPort;
class ReadGate;
class TcpServer;

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
    void reloadSettings() override;

    qint64 frames() const { return m_frames; } // counted, shown or not
    const FrameShow &frameShow() const { return *m_show; }

public slots:
    void SltSerialportChanged(QStringList serialports);
    void SltChangeProtocol(int index);
    void SltOpenLink();
    void SltChangeImageShow(int index); // of the device-count control

    // The one way of everything that comes in; the name tells the streams apart.
    void SltRecvImageData(QString name, QByteArray byData);
    void SltRecvSerialportData(QByteArray byData);
    void SltReadFromTcpSocket();
    void SltReadyFromUdp();
    void SltTcpError(QAbstractSocket::SocketError error);

    // An empty value reads; texts are hexadecimal.
    void SltReadWriteRegister(QString strAddr, QString strValue, int regId);
    void SltCalculationRate();

signals:
    void signalRefresCounts(int pageIndex);

private:
    void buildUi();
    QWidget *buildPanel();
    QWidget *buildWorkArea();
    void addChecks(FormGroup *group);
    void connectParts();

    // The links (cameralinks.cpp).
    void connectLinks();
    bool isLinkOpen() const;
    void closeLink();
    bool hasValidFields();
    void openServer();
    void openClient();
    void openUdp();
    void openSerial();
    void gatherSerial(const QByteArray &bytes);
    void passSerialOn();
    void showOpened(const QString &state);
    void showClosed(const QString &state = {});
    void showFailed(const QString &why);
    void clientConnected();
    void clientDisconnected();
    void clientFailed(const QString &why);
    void serialVanished();
    void showPeers();
    qint64 send(const QByteArray &packet);
    qint64 sendDatagram(const QByteArray &packet);

    // What came (cameradebugwidget.cpp).
    void noteLoss(CameraStreams::Stream &stream);
    void takePackets(const QString &sender, CameraStreams::Stream &stream);
    void takeJpegs(CameraStreams::Stream &stream);
    void actOnImage(const CameraEvent &event);
    void actOnFormat(const CameraEvent &event);
    void actOnRegister(const QString &sender, const CameraEvent &event);
    bool isAskedBoard(const QString &sender) const;
    void countFrame();
    void startElapsed();
    void raiseError(const QString &why);
    void showCounts();
    void fold();

    FormPanel *m_panel = nullptr;
    CameraLinkPanel *m_link = nullptr;
    ImageFormatConfig *m_config = nullptr;
    QComboBox *m_deviceCount = nullptr;
    QCheckBox *m_jpegData = nullptr;
    QCheckBox *m_checkCrc = nullptr;
    QCheckBox *m_bigEndian = nullptr;
    CameraStatusRow *m_status = nullptr;
    ImageViewer *m_viewer = nullptr;
    PictureActions *m_actions = nullptr;

    TcpServer *m_server;
    ClientSocket *m_socket;
    DatagramSocket *m_udp;
    QtSerialPort *m_serial;
    QByteArray m_serialBytes; // gathered, until the line pauses
    QTimer m_serialPause;
    ReadGate *m_gate;
    FrameShow *m_show;

    CameraStreams m_streams;
    QElapsedTimer m_clock;
    QElapsedTimer m_sinceFirst; // since the first frame began
    QElapsedTimer m_sinceRate;
    QTimer m_rateTimer;
    qint64 m_frames = 0;
    qint64 m_framesAtRate = 0;
    qint64 m_errors = 0;
    qint64 m_sendCount = 0;
    qint64 m_recvCount = 0;
    qint64 m_recvAtRate = 0;
};
