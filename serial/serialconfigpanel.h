#pragma once

// The serial page's port parameters: what is chosen, and the button that opens
// and closes. Opens nothing itself.

#include "formpanel.h"

class BaudRateBox;
class PortComboBox;
class QComboBox;
class QPushButton;

class SerialConfigPanel : public FormGroup
{
    Q_OBJECT

public:
    // Chooses the defaults of the settings.
    explicit SerialConfigPanel(QWidget *parent = nullptr);

    QString portText() const; // an entry of the list, or what was typed
    // 0 where the text is no rate.
    int baudRate() const;
    int dataBits() const;
    int stopBitsIndex() const; // 0: 1, 1: 1.5, 2: 2
    int parityIndex() const;   // 0 none, 1 odd, 2 even, 3 mark, 4 space
    QString stopBitsText() const;
    QString parityText() const;

    // Refills the list; what was chosen or typed stays when it can.
    void setPorts(const QStringList &entries);
    bool selectEntry(const QString &entry); // exact; false when not in the list

    // Open: parameters are fixed and the button closes.
    void setOpenState(bool open);
    // The port is closed as soon as its last bytes have left.
    void setClosing();
    // Somebody else has the open port for a while: it cannot be closed here.
    void setHandedOver(bool handedOver);

    void loadDefaults();
    void rememberDefaults(); // in the settings file, for the next start

    QPushButton *openButton() const { return m_open; }

signals:
    void openClicked();

private:
    void buildUi();

    PortComboBox *m_port;
    BaudRateBox *m_baudRate;
    QComboBox *m_parity;
    QComboBox *m_dataBits;
    QComboBox *m_stopBits;
    QPushButton *m_open;
};
