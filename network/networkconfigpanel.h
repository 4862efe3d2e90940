#pragma once

// The network page's link parameters, which begin as the user left them.

#include "networkfields.h"

class FieldMemory;
class MulticastGroup;
struct Peer;
class QCheckBox;
class QPushButton;

class NetworkConfigPanel : public NetworkFields
{
    Q_OBJECT

public:
    // Chooses the defaults of the settings.
    explicit NetworkConfigPanel(QWidget *parent = nullptr);
    // A group of the panel of its own, for datagrams; a button here unfolds it.
    void setMulticastGroup(MulticastGroup *group);
    MulticastSettings multicast() const override;

    void loadDefaults();
    void saveDefaults(); // when a link has been opened

    // Keeps what stays as it is until the user changes it.
    void remember(FieldMemory *memory);

    bool reconnects() const;
    // Of datagrams.
    void setDestination(const Peer &peer);

signals:
    void replyClicked();      // to the sender of the last datagram
    void statisticsClicked(); // of the peers
    void reconnectChanged(bool reconnects);

private:
    // What the fields say.
    struct Texts
    {
        int protocol = 0;
        QString local; // "0.0.0.0" for all interfaces
        QString server;
        QString port;
        QString destination;
        QString destinationPort;
    };
    // Of the link that was opened last.
    static Texts opened();
    Texts shown() const;
    void keepTexts(); // what differs from the link that was opened last
    void namePort();
    void addButtons();
    void showMulticast();

    QCheckBox *m_reconnect;
    QPushButton *m_unfoldMulticast;
    MulticastGroup *m_multicast = nullptr;
    bool m_isLoading = false;
};
