#pragma once

// The options of a send box: the page shown, how typed text becomes bytes, and
// automatic sending.

#include "formpanel.h"
#include "settings.h"

class FieldMemory;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QRadioButton;
class QtSendBoxWidget;

class SendOptions : public FormGroup
{
    Q_OBJECT

public:
    // Sets the box up, and shows when it stops automatic sending.
    explicit SendOptions(QtSendBoxWidget *box, QWidget *parent = nullptr);

    // Keeps all choices but that to send automatically.
    void remember(FieldMemory *memory, Settings::AreaChoices *choices, Settings::SendChoices *single);
    void load(); // what the memory does not keep

    // Applies the period that was typed. One below 10 ms, or no number, is
    // refused with a tip, and the former period is shown again.
    void applyInterval();

    QWidget *lastField() const; // in tab order

signals:
    void pageChosen(int index);
    void intervalEdited();

private:
    void buildUi();

    QtSendBoxWidget *m_box;
    Settings::AreaChoices *m_choices = nullptr;
    QComboBox *m_page;
    QRadioButton *m_text;
    QRadioButton *m_hex;
    QCheckBox *m_newline;
    QCheckBox *m_auto;
    QLineEdit *m_interval;
};
