#pragma once

// Asks for a name. Pages use the static helper, which asks DialogAnswers first.

#include "qtframelessdialog.h"

class QLineEdit;
class QPushButton;

class NameDialog : public QtFramelessDialog
{
    Q_OBJECT

public:
    NameDialog(const QString &title, const QString &label, int maxLength, QWidget *parent = nullptr);

    void setName(const QString &name);
    QString name() const; // without spaces around it

    // Proposes a name. Empty: cancelled.
    static QString ask(QWidget *parent, const QString &title, const QString &label, const QString &proposal,
                       int maxLength);

private:
    QLineEdit *m_name;
    QPushButton *m_ok;
};
