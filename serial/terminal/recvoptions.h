#pragma once

// The options of a receive area: how received bytes are shown, and the buttons
// to clear and to save them.

#include "formpanel.h"
#include "settings.h"

class FieldMemory;
class QCheckBox;
class QPushButton;
class QRadioButton;
class QSpinBox;

class RecvOptions : public FormGroup
{
    Q_OBJECT

public:
    // Messages arrive in pieces: there is no pause to wait for, and no log mode.
    enum Kind { Stream, Messages };

    explicit RecvOptions(QWidget *parent = nullptr, Kind kind = Stream);

    // Keeps all choices but that to stop showing.
    void remember(FieldMemory *memory, Settings::AreaChoices *choices);

    bool hexShow() const;
    bool stopShow() const;
    void resumeShow();
    bool logMode() const;
    bool timeStamp() const;
    // Milliseconds without a byte that end a packet.
    int quietTime() const;

signals:
    void clearClicked();
    void saveClicked();
    void delayChanged();
    void stopShowChanged(bool stopped);

private:
    QRadioButton *m_text;
    QRadioButton *m_hex;
    QCheckBox *m_stop;
    QCheckBox *m_log;
    QCheckBox *m_stamp;
    QSpinBox *m_quiet;
};
