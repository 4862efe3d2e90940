#pragma once

// Shows a transfer's protocol log, to be read, copied or saved.

#include "qtframelessdialog.h"

class QPlainTextEdit;

class TransferLogDialog : public QtFramelessDialog
{
    Q_OBJECT

public:
    explicit TransferLogDialog(const QString &log, QWidget *parent = nullptr);

private:
    void save();

    QPlainTextEdit *m_text;
};
