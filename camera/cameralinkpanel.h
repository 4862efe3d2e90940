#pragma once

// What the camera page is reached through: the network, or a serial port. Begins
// with the fields of the last link that was opened.

#include "networkfields.h"

class PortComboBox;

class CameraLinkPanel : public NetworkFields
{
    Q_OBJECT

public:
    explicit CameraLinkPanel(QWidget *parent = nullptr);

    QString serialPort() const; // an entry of the list, or what was typed
    int baudRate() const;       // 0 where the text is none
    void setSerialPorts(const QStringList &entries);

    void loadDefaults();
    void saveDefaults() const; // when a link has been opened

private:
    PortComboBox *m_serial;
    QString m_wantedPort; // of the settings, until it is there
    QComboBox *m_baudRate;
};
