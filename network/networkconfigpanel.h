#pragma once

// The network page's link parameters: what is chosen, the button that opens
// and closes, and a line that says how the link is. Opens nothing itself.

#include "shell/base/formpanel.h"

#include <QHostAddress>

class LocalAddressBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

class NetworkConfigPanel : public FormGroup
{
    Q_OBJECT

public:
    enum Type { TcpServer = 0, TcpClient = 1, Udp = 2 }; // in the list's order

    // Chooses the defaults of the settings.
    explicit NetworkConfigPanel(QWidget *parent = nullptr);

    int type() const;
    QHostAddress localAddress() const; // Any for all interfaces; null for nonsense
    QString serverAddress() const;     // an address or a host's name
    QString portText() const;
    quint16 port() const; // 0 where the text is no port
    QHostAddress destinationAddress() const;
    quint16 destinationPort() const;

    // Open: what the link is made of is fixed, and the button closes.
    void setOpenState(bool open);
    // Without a text: that nothing is open.
    void showState(const QString &text, bool isError);

    // A bubble below the field that is wrong.
    void hintPort();
    void hintAddress();

    void loadDefaults();

signals:
    void typeChanged(int index);
    void openClicked();

private:
    struct Row
    {
        QLabel *label;
        QWidget *field;
        void setVisible(bool visible);
    };

    void buildUi();
    void showType();

    QComboBox *m_type;
    LocalAddressBox *m_local;
    QLineEdit *m_server;
    QLineEdit *m_port;
    QLineEdit *m_destination;
    QLineEdit *m_destinationPort;
    QPushButton *m_open;
    QLabel *m_state;
    Row m_localRow{};
    Row m_serverRow{};
    Row m_portRow{};
    Row m_destinationRow{};
    Row m_destinationPortRow{};
    bool m_isOpen = false;
};
