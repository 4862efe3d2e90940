#pragma once

// Edits the rules that color the receive displays. Accepted, it has stored them;
// otherwise it changes nothing.

#include "colorrules.h"
#include "qtframelessdialog.h"

#include <QColor>

class QCheckBox;
class QLabel;
class QPushButton;
class QTableView;
class RuleForm;
class RuleModel;

class RuleDialog : public QtFramelessDialog
{
    Q_OBJECT
    Q_PROPERTY(QColor errorColor READ errorColor WRITE setErrorColor) // set by the skins

public:
    explicit RuleDialog(QWidget *parent = nullptr);

    QColor errorColor() const { return m_errorColor; }
    void setErrorColor(const QColor &color);

public slots:
    void accept() override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void buildUi();
    void buildTable();
    QLayout *buildSide();
    QLayout *buildBottom();
    QPushButton *button(const char *name, const QString &text, void (RuleDialog::*pressed)());
    int currentRow() const;
    void select(int row);
    void showCurrent();
    void storeCurrent();
    void showFault(); // of the current rule
    void add();
    void remove();
    void moveUp();
    void moveDown();
    void moveTo(int row);
    void addCommon();
    void importRules();
    void exportRules();
    void addMissing(const ColorRules &rules);
    void showState(const QString &text, bool isFault = false);

    RuleModel *m_model;
    QCheckBox *m_use;
    QTableView *m_table;
    QLabel *m_empty;
    QPushButton *m_add;
    QPushButton *m_remove;
    QPushButton *m_up;
    QPushButton *m_down;
    RuleForm *m_form;
    QLabel *m_state;
    QColor m_errorColor;
};
