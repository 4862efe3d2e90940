#pragma once

// A modal dialog for work of a few seconds: a spinner, a text and, where
// the work can be stopped, "取消". The owner closes it with accept().

#include "qtframelessdialog.h"

class QLabel;
class QPushButton;
class WaitingSpinnerWidget;

class QtWaitDialog : public QtFramelessDialog
{
    Q_OBJECT

public:
    explicit QtWaitDialog(const QString &text, QWidget *parent = nullptr);

    void setText(const QString &text);
    // It cannot be cancelled at first: Esc and the window manager are ignored.
    void setCancelable(bool cancelable);

public slots:
    void reject() override;

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QLabel *m_text;
    QPushButton *m_cancel;
    WaitingSpinnerWidget *m_spinner;
    bool m_cancelable = false;
};
