#pragma once

// What the camera page is reached through: the network, or a serial port.

#include "network/networkfields.h"

class PortComboBox;

class CameraLinkPanel : public NetworkFields
{
    Q_OBJECT

public:
    explicit CameraLinkPanel(QWidget *parent = nullptr);

    QString serialPort() const; // an entry of the list, or what was typed
    int baudRate() const;       // 0 where the text is none
    void setSerialPorts(const QStringList &entries);

private:
    PortComboBox *m_serial;
    QComboBox *m_baudRate;
};
