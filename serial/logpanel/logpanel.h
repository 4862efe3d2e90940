#pragma once

// The bar of a page's session log, and the button that opens it: which file the session
// goes to, in which form and how much of it is kept. Owns the log, which goes on at the
// next start. Closed at first, and off.

#include "fieldmemory.h"
#include "notice.h"
#include "sessionlog.h"
#include "settings.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

class LogPanel : public QWidget
{
    Q_OBJECT

public:
    explicit LogPanel(Settings::LogChoices *choices, QWidget *parent = nullptr);

    SessionLog *log() { return &m_log; }
    // Records into this file from now on, which is not remembered.
    void record(const QString &fileName);
    // As the settings are now; a running log goes on.
    void load();

    QPushButton *button() const { return m_button; } // for the row above the display

signals:
    void notify(const Notice &notice);
    // The state of the log in a few words, empty while there is none.
    void stateChanged(const QString &text, bool isFailing);

private:
    void buildUi();
    QLabel *labelFor(const QString &text, QWidget *field);
    void begin();
    void handleToggled(bool isOn);
    void start(bool opensNow);
    void chooseFile();
    void showState();

    Settings::LogChoices *m_choices;
    SessionLog m_log;
    FieldMemory m_memory;
    QPushButton *m_button;
    QCheckBox *m_on;
    QLineEdit *m_file;
    QPushButton *m_choose;
    QComboBox *m_form;
    QCheckBox *m_append;
    QSpinBox *m_maxSize;
    QSpinBox *m_maxTime;
    QSpinBox *m_maxTotal;
    QLabel *m_state;
};
