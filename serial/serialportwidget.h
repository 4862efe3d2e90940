#pragma once

// The serial port assistant: configuration panel, receive display, send box
// and counters. Owns the port that it opens; bytes that come in go to a spool
// file and to the display.

#include "qtwidgetbase.h"
#include "ymodemfiletransmit.h"

#include <QByteArrayList>
#include <memory>

class AnswerPanel;
class ByteSpool;
class FieldMemory;
class FileTransfer;
class FormPanel;
class LinesGroup;
class LogPanel;
class ProfileButton;
class QtSendBoxWidget;
class QtTerminalWidget;
class QextSerialPort;
class QuietReader;
class ReceiveStore;
class RecvOptions;
class SendOptions;
class SerialConfigPanel;
class SerialReconnector;
class StateIndicator;
class WorkArea;
struct LaunchOptions;

class SerialportWidget : public QtWidgetBase
{
    Q_OBJECT

public:
    static constexpr int pageIndex = 0; // in the window's stack

    explicit SerialportWidget(QWidget *parent = nullptr);
    ~SerialportWidget() override;

    QStringList counts() const override;
    void clearCounts() override;
    bool mayClose() override;
    void closeLinks() override;
    bool isClosed() const override;
    bool saveBeforeExit() override;
    void reloadSettings() override;
    void reloadCodec() override;

    // What the command line asks for.
    void launch(const LaunchOptions &options);

    const ByteSpool &spool() const; // every byte of the session

public slots:
    void SltSerialportChanged(QStringList serialports);
    void clearRecv();
    void SltOpenSerialport();
    void SltWriteDataToSerialport(QByteArray byCmd);
    void SltRecvFromSerialport();
    void SltDelayChanged();
    void SltBtnFoldClicked();
    void SltChangeSendPage(int index);
    void SltChangeAutoInterval();
    void SltSaveDataToFile();
    void sltShowErrorHint();
    void sltInterruptDetection();
    void sltSendXYmodemFile(int type, int size, QStringList fileName);
    void sltTransmitProgress(int porgress, QString name);
    void sltTransmitStatus(YmodemFileTransmit::Status status, QString name);

private:
    void buildUi();
    void connectParts();

    void openPort();
    void showOpening();
    void handleOpened();
    void reportFailedOpening(const QString &port);
    void setPortState(bool open);
    void handlePortState(Link::State state);
    void handlePortClosed(const QString &notOpened);
    void handleWaiting(bool isWaiting);
    void showWaiting();
    void takeArrived();
    // The one way of sending bytes; returns how many were accepted.
    qint64 sendBytes(const QByteArray &bytes);
    void beginTransfer();
    void endTransfer();
    void handleReceived(const QByteArrayList &pieces, qint64 size);
    void showCounts();
    void loadFields();

    SerialConfigPanel *m_config = nullptr;
    LinesGroup *m_lines = nullptr;
    RecvOptions *m_recvOptions = nullptr;
    SendOptions *m_sendOptions = nullptr;
    LogPanel *m_log = nullptr;
    AnswerPanel *m_answers = nullptr;
    ProfileButton *m_profiles = nullptr;
    FieldMemory *m_memory = nullptr;
    FormPanel *m_panel = nullptr;
    WorkArea *m_area = nullptr; // owns the four below
    StateIndicator *m_state = nullptr;
    QtTerminalWidget *m_terminal = nullptr;
    ReceiveStore *m_received = nullptr;
    QtSendBoxWidget *m_sendBox = nullptr;
    FileTransfer *m_transfer = nullptr;

    std::unique_ptr<QextSerialPort> m_port;
    QuietReader *m_reader = nullptr;
    SerialReconnector *m_reconnector = nullptr;
    quint32 m_sendCount = 0;
    quint32 m_recvCount = 0;

    QString m_openedEntry;       // of the list, while it is being opened
    bool m_closedByUser = false; // which is reported at the end of the closing
    bool m_quitting = false;     // a transfer is being stopped, its port closed then
    bool m_defaultsDue = false;  // settings were restored while the port was open
};
