#pragma once

// What the camera page is reached through: protocol, its fields, the button that
// opens and closes, and a line that says how the link is. Opens nothing itself.

#include "shell/base/formpanel.h"

#include <QHostAddress>

class LocalAddressBox;
class PortComboBox;
class QComboBox;
class QLineEdit;
class QPushButton;

class CameraLinkPanel : public FormGroup
{
    Q_OBJECT

public:
    enum Protocol { TcpServer = 0, TcpClient = 1, Udp = 2, Serial = 3 }; // in the list's order

    explicit CameraLinkPanel(QWidget *parent = nullptr);

    int protocol() const;
    QHostAddress localAddress() const; // Any for all interfaces; null for nonsense
    QString serverAddress() const;     // an address or a host's name
    quint16 port() const;              // 0 where the text is no port
    QHostAddress destinationAddress() const;
    quint16 destinationPort() const;
    QString serialPort() const; // an entry of the list, or what was typed
    int baudRate() const;       // 0 where the text is none
    void setSerialPorts(const QStringList &entries);

    void setOpenState(bool open);
    // Without a text: that nothing is open.
    void showState(const QString &text, bool isError = false);

    // A bubble below the field that is wrong.
    void hintPort();
    void hintAddress();

signals:
    void protocolChanged(int index);
    void openClicked();

private:
    void buildUi();
    void showProtocol();

    struct Row
    {
        QLabel *label;
        QWidget *field;
        QList<int> protocols; // that need it
    };
    QList<Row> m_rows;
    QComboBox *m_protocol;
    LocalAddressBox *m_local;
    QLineEdit *m_server;
    QLineEdit *m_port;
    QLineEdit *m_destination;
    QLineEdit *m_destinationPort;
    PortComboBox *m_serial;
    QComboBox *m_baudRate;
    QPushButton *m_open;
    QLabel *m_state;
    bool m_isOpen = false;
};
