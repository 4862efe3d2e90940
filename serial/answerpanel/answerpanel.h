#pragma once

// The bar of a page's automatic answers, and the command that opens it: turns them on,
// limits them and leads to the rules. Owns the rules and what answers. Closed at first;
// off at each start.

#include "answerstore.h"
#include "linkanswers.h"
#include "settings.h"

#include <QWidget>

class QAction;
class QCheckBox;
class QLabel;
class QPushButton;
class QSpinBox;

class AnswerPanel : public QWidget
{
    Q_OBJECT

public:
    // fileName: of the rules, in the folder of the configuration.
    AnswerPanel(Settings::AnswerChoices *choices, const QString &fileName, QWidget *parent);

    LinkAnswers *answers() { return &m_answers; }
    // As the settings are now.
    void load();

    QAction *action() const { return m_action; } // opens and closes the bar

signals:
    void notify(const Notice &notice);
    // The state in a few words, empty while they are off.
    void stateChanged(const QString &text, bool isFailing);

private:
    void buildUi();
    void handleToggled(bool isOn);
    void loadRules();
    void editRules();
    void showState();

    Settings::AnswerChoices *m_choices;
    AnswerStore m_store;
    LinkAnswers m_answers;
    QTimer m_refresh;
    QAction *m_action;
    QCheckBox *m_on;
    QPushButton *m_rules;
    QSpinBox *m_limit;
    QLabel *m_state;
};
