#pragma once

// What a link over the network is made of: protocol, the fields that it needs,
// the button that opens and closes, and a line that says how the link is. The
// network page's and the camera page's panels add what is their own. Opens
// nothing itself.

#include "formpanel.h"
#include "multicast.h"

#include <QHostAddress>

class LocalAddressBox;
class QComboBox;
class QLineEdit;
class QPushButton;

class NetworkFields : public FormGroup
{
    Q_OBJECT

public:
    // In the list's order. Not every list has the last one.
    enum Protocol { TcpServer = 0, TcpClient = 1, Udp = 2, Serial = 3 };

    int protocol() const;
    QHostAddress localAddress() const; // Any for all interfaces; null for nonsense
    QString serverAddress() const;     // an address or a host's name
    QString portText() const;          // as it was typed
    quint16 port() const;              // 0 where the text is no port
    QHostAddress destinationAddress() const;
    quint16 destinationPort() const;
    // Of datagrams; none where the page has no fields for it.
    virtual MulticastSettings multicast() const { return {}; }

    // Points at the network field that is wrong and says why; empty where none is.
    QString checkFields();

    // Open: what the link is made of is fixed, and the button closes. Where
    // datagrams go can be changed at any time.
    void setOpenState(bool open);
    // As open, but the button ends the waiting for the peer.
    void setWaiting();
    // Without a text: that nothing is open.
    void showState(const QString &text, bool isError = false);

    QPushButton *openButton() const { return m_open; }

signals:
    void protocolChanged(int index);
    void openClicked();

protected:
    // The mark tells one page's object names from another's.
    NetworkFields(const QString &title, const QString &protocolLabel, const QString &mark, QWidget *parent);

    // Shown for these protocols only.
    QLabel *addField(const QString &label, QWidget *field, const QList<int> &protocols,
                     bool isPartOfLink = true);
    // Shown for these protocols only, and usable at any time.
    void showFor(const QList<int> &protocols, QWidget *widget);
    // Below all fields.
    void addButton(const QList<QWidget *> &beside = {}, QWidget *besideState = nullptr);

    QComboBox *m_protocol;
    LocalAddressBox *m_local;
    QLineEdit *m_server;
    QLineEdit *m_port;
    QLabel *m_localLabel = nullptr;
    QLabel *m_portLabel = nullptr;
    QLineEdit *m_destination;
    QLineEdit *m_destinationPort;

private:
    void nameFields(const QString &mark);
    void buildUi(const QString &protocolLabel);
    void showProtocol();

    struct Row
    {
        QLabel *label; // may be null
        QWidget *field;
        QList<int> protocols; // that need it
        bool isPartOfLink;    // and fixed while that is open
    };
    QList<Row> m_rows;
    QPushButton *m_open;
    QLabel *m_state;
    bool m_isOpen = false;
};
