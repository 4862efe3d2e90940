#pragma once

// The network assistant: TCP server, TCP client and UDP behind one panel, one
// receive display and one send box. Owns the sockets; bytes that come in go to
// a spool file and to the display.

#include "qtwidgetbase.h"

#include <QAbstractSocket>

class ByteSpool;
class ClientListPanel;
class ClientSocket;
class DatagramSocket;
class FormPanel;
class NetworkConfigPanel;
class QtSendBoxWidget;
class QtTerminalWidget;
class ReadGate;
class ReceiveStore;
class RecvOptions;
class SendOptions;
class StateIndicator;
class TcpServer;
class WorkArea;

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

signals:
    void signalRefresCounts(int pageIndex);

private:
    void buildUi();
    void connectParts();
    void connectSockets();

    // Each opens or closes the link of its protocol.
    void toggleServer();
    void toggleClient();
    void toggleUdp();
    bool isLinkOpen() const;
    void takeThrottled();
    void closeLink();
    bool hasValidFields();
    void showOpened(const QString &state);
    void showClosed(const QString &state);
    void showFinishing(); // the client's connection
    void showFailed(const QString &why);
    void saveSettings();

    qint64 sendToClients(const QByteArray &bytes);
    qint64 sendToHost(const QByteArray &bytes);
    qint64 sendDatagram(const QByteArray &bytes);
    // Says so once in a row: a box that sends by itself would repeat it.
    void tellNotSent(const QString &text);

    void showCounts();

    NetworkConfigPanel *m_config = nullptr;
    ClientListPanel *m_clients = nullptr;
    RecvOptions *m_recvOptions = nullptr;
    SendOptions *m_sendOptions = nullptr;
    FormPanel *m_panel = nullptr;
    WorkArea *m_area = nullptr; // owns the four below
    StateIndicator *m_state = nullptr;
    QtTerminalWidget *m_terminal = nullptr;
    ReceiveStore *m_received = nullptr;
    QtSendBoxWidget *m_sendBox = nullptr;

    TcpServer *m_server;
    ClientSocket *m_socket;
    DatagramSocket *m_udp;
    ReadGate *m_gate = nullptr;

    qint64 m_sendCount = 0; // handed over to the system
    qint64 m_recvCount = 0;
    QString m_notSentTold;      // why the last bytes were not sent
    bool m_defaultsDue = false; // settings were restored while the link was open
};
