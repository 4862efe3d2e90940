#pragma once

// The network assistant: TCP server, TCP client and UDP behind one panel, one
// receive display and one send box. Received bytes go to a spool file and to the
// display. The links are LinkSession's.

#include "qtwidgetbase.h"

#include <QAbstractSocket>

class AnswerPanel;
class ByteSpool;
class ClientListPanel;
class FieldMemory;
class FormPanel;
class LinkSession;
class LogPanel;
class MulticastGroup;
class NetworkConfigPanel;
class NetworkPeers;
class ProfileButton;
class QtSendBoxWidget;
class QtTerminalWidget;
class ReceiveStore;
class RecvOptions;
class SendOptions;
class StateIndicator;
class WorkArea;
struct LaunchOptions;

class NetworkToolWidget : public QtWidgetBase
{
    Q_OBJECT

public:
    static constexpr int pageIndex = 2; // in the window's stack

    explicit NetworkToolWidget(QWidget *parent = nullptr);
    ~NetworkToolWidget() override;

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
    void clearRecv();
    void sltChangeNetType(int index);
    void sltBtnOpenClicked();
    void sltChangeSendPage(int index);
    void sltBtnFoldClicked();
    void sltChangeAutoInterval();
    void sltSaveDataToFile();
    void sltShowErrorHint();
    void sltNewClientConnected(QString name);
    void sltClientDisconnected(QString name);
    void sltSendData(QByteArray byData);
    void sltRecvSocketMessage(QString name, QByteArray byData);
    void sltDisconnectClient();
    void sltConnectedToHost();
    void sltDisConnectedToHost();
    void sltReadyFromHost();
    void sltTcpError(QAbstractSocket::SocketError error);
    void sltReadyFromUdp();

private:
    void buildUi();
    void connectParts();
    void connectSession();
    void connectAnswers();

    void showLinkOpen(bool open);
    // Posts it once in a row: automatic sending would repeat it.
    // False where nothing was accepted; the reason may be empty.
    bool transmit(const QByteArray &bytes, QString *reason);
    void notifyNotSent(const QString &text);

    void showSent(const QByteArray &bytes);
    void showCounts();

    NetworkConfigPanel *m_config = nullptr;
    ClientListPanel *m_clients = nullptr;
    MulticastGroup *m_multicast = nullptr;
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

    LinkSession *m_session = nullptr;
    NetworkPeers *m_peers = nullptr;

    qint64 m_sendCount = 0; // handed over to the system
    qint64 m_recvCount = 0;
    QString m_notSentReason;    // of the last bytes, where they were not sent
    bool m_defaultsDue = false; // settings were restored while the link was open
};
