#pragma once

// The serial page's port parameters: what is chosen, and the button that opens
// and closes. Opens nothing itself.

#include "formpanel.h"
#include "serialsettings.h"

class BaudRateBox;
class PortComboBox;
class QCheckBox;
class QComboBox;
class QPushButton;

class SerialConfigPanel : public FormGroup
{
    Q_OBJECT

public:
    // Chooses the defaults of the settings.
    explicit SerialConfigPanel(QWidget *parent = nullptr);

    QString portText() const; // an entry of the list, or what was typed
    // As chosen. The name is empty where the text names no port, the baud rate 0
    // where its text is no rate.
    SerialSettings chosen() const;

    // Refills the list; what was chosen or typed stays when it can.
    void setPorts(const QStringList &entries);
    bool selectEntry(const QString &entry); // exact; false when not in the list

    // Open: parameters are fixed and the button closes.
    void setOpenState(bool open);
    // A click cancels the opening.
    void setOpening();
    // The port is closed as soon as its last bytes have left.
    void setClosing();
    // A click ends the waiting for the device.
    void setWaiting();
    // Somebody else has the open port for a while: it cannot be closed here.
    void setHandedOver();

    void loadDefaults();
    void storeChosen(); // in the settings, for this run
    // As if the user had. False where the list lacks it; its name is then in the field.
    bool choosePort(const QString &name);
    void chooseBaudRate(int baudRate);
    void rememberDefaults(); // in the settings file, for the next start

    // The port is opened again when its device is back.
    bool reconnects() const;
    // The port that is open or waited for, although the list may lack it.
    void showPort(const QString &name);

    QPushButton *openButton() const { return m_open; }

signals:
    void openClicked();
    void reconnectChanged(bool reconnects);

private:
    void buildUi();
    void rememberPort();
    bool selectPort(const QString &name);

    PortComboBox *m_port;
    BaudRateBox *m_baudRate;
    QComboBox *m_parity;
    QComboBox *m_dataBits;
    QComboBox *m_stopBits;
    QPushButton *m_open;
    QCheckBox *m_reconnect;
    bool m_isPortChosen = false; // by the user; the remembered one until then
};
