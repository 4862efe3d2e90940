#pragma once

// The options of a send box: which of its pages is shown, how typed text
// becomes bytes, and sending by itself.

#include "formpanel.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QRadioButton;
class QtSendBoxWidget;

class SendOptions : public FormGroup
{
    Q_OBJECT

public:
    // Drives the box, and follows it when it stops sending by itself.
    explicit SendOptions(QtSendBoxWidget *box, QWidget *parent = nullptr);

    // Takes the period typed last; below 10 ms, empty or no number is refused
    // with a tip and the former period comes back.
    void applyInterval();

    QWidget *lastField() const; // in tab order

signals:
    void pageChosen(int index);
    void intervalEdited();

private:
    void buildUi();

    QtSendBoxWidget *m_box;
    QComboBox *m_page;
    QRadioButton *m_text;
    QRadioButton *m_hex;
    QCheckBox *m_newline;
    QCheckBox *m_auto;
    QLineEdit *m_interval;
};
