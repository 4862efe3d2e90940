#pragma once

// The port and the baud rate of the PID page, and the button that opens and
// closes. Opens nothing itself.

#include "formpanel.h"

class PortComboBox;
class QComboBox;
class QPushButton;

class PidPortPanel : public FormGroup
{
    Q_OBJECT

public:
    explicit PidPortPanel(QWidget *parent = nullptr);

    QString portText() const; // an entry of the list, or what was typed
    int baudRate() const;
    void setPorts(const QStringList &entries);
    // As if the user had. False where the list lacks it; its name is then in the field.
    bool choosePort(const QString &name);
    // Open: port and rate are fixed and the button closes.
    void setOpenState(bool open);
    void setOpening(); // a click cancels it
    // In the settings, for the next start; and from there.
    void remember();
    void load();

    QPushButton *openButton() const { return m_open; }

signals:
    void openClicked();

private:
    bool selectPort(const QString &name);

    PortComboBox *m_port;
    QComboBox *m_baudRate;
    QPushButton *m_open;
    bool m_isPortChosen = false; // by the user; the remembered one until then
};
