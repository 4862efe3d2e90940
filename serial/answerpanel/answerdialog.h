#pragma once

// Edits the rules for answers, and shows how often each has matched meanwhile. The rules
// are the caller's to store.

#include "answerrules.h"
#include "qtframelessdialog.h"

#include <QColor>

class AnswerForm;
class AnswerModel;
class LinkAnswers;
class QLabel;
class QPushButton;
class QTableView;

class AnswerDialog : public QtFramelessDialog
{
    Q_OBJECT
    Q_PROPERTY(QColor errorColor READ errorColor WRITE setErrorColor) // set by the skins

public:
    // The answers outlive it.
    AnswerDialog(const AnswerRules &rules, LinkAnswers *answers, QWidget *parent = nullptr);

    const AnswerRules &rules() const;

    QColor errorColor() const { return m_errorColor; }
    void setErrorColor(const QColor &color);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void buildUi();
    void buildTable();
    QLayout *buildSide();
    QLayout *buildBottom();
    QPushButton *button(const char *name, const QString &text, void (AnswerDialog::*pressed)());
    int currentRow() const;
    void select(int row);
    void showCurrent();
    void storeCurrent();
    void add();
    void duplicate();
    void remove();
    void moveUp() { moveTo(currentRow() - 1); }
    void moveDown() { moveTo(currentRow() + 1); }
    void moveTo(int row);
    void clearHits();
    void importRules();
    void exportRules();
    void showState(const QString &text, bool isFault = false);

    LinkAnswers *m_answers;
    AnswerModel *m_model;
    QTableView *m_table;
    QLabel *m_empty;
    QPushButton *m_add;
    QPushButton *m_duplicate;
    QPushButton *m_remove;
    QPushButton *m_up;
    QPushButton *m_down;
    AnswerForm *m_form;
    QLabel *m_state;
    QColor m_errorColor;
};
