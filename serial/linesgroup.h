#pragma once

// The modem lines of a port: flow control, DTR and RTS, what the board raises, a
// break, and the pulses that restart a board. Folded at first. Knows the link, and
// remembers what was chosen.

#include "formpanel.h"
#include "linepulse.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QTimer;
class SerialLink;
struct SerialSettings;

class LinesGroup : public FormGroup
{
    Q_OBJECT

public:
    explicit LinesGroup(SerialLink *link, QWidget *parent = nullptr);

    // Adds what is chosen here.
    void writeTo(SerialSettings *settings) const;
    // What is fixed while the port is open, and what is possible only then. While a
    // file is sent, nothing is.
    void showState(bool isOpen, bool isBusy);

    void load(); // the remembered choice

    QWidget *lastField() const { return m_actions.last(); } // in tab order

private:
    void buildUi();
    void applyLines();
    void showLines();
    void updatePolling();

    SerialLink *m_link;
    LinePulse m_pulse;
    QTimer *m_poll;
    QComboBox *m_flow;
    QCheckBox *m_dtr;
    QCheckBox *m_rts; // partially checked: as the system leaves it
    QVector<QLabel *> m_lamps;
    QVector<QWidget *> m_actions;
    bool m_isOpen = false;
    bool m_isLoading = false;
};
