#pragma once

// The fields in which the user edits one rule for answers.

#include "answerrules.h"

#include <QWidget>

class QComboBox;
class QGridLayout;
class QLineEdit;
class QSpinBox;

class AnswerForm : public QWidget
{
    Q_OBJECT

public:
    explicit AnswerForm(QWidget *parent = nullptr);

    // Emits nothing.
    void setRule(const AnswerRule &rule);
    const AnswerRule &rule() const { return m_rule; }
    void focusPattern();

signals:
    void changed(); // by the user

private:
    QLineEdit *edit(const char *name, const QString &label, int maxLength);
    QComboBox *combo(const char *name, const QString &label, const QStringList &entries);
    QLayout *buildEnd();
    void readFields();
    void showHints();

    AnswerRule m_rule;
    QComboBox *m_kind;
    QLineEdit *m_pattern;
    QComboBox *m_answerKind;
    QLineEdit *m_answer;
    QLineEdit *m_name;
    QComboBox *m_lineEnd;
    QComboBox *m_checksum;
    QSpinBox *m_delay;
};
