#pragma once

// Qt's file dialog as a child widget, asking its questions in the program's
// own boxes. Part of QtFileDialog.

#include <QFileDialog>

class EmbeddedFileDialog : public QFileDialog
{
    Q_OBJECT

public:
    explicit EmbeddedFileDialog(QWidget *parent);

protected:
    void accept() override;

private:
    bool mayOverwrite();
    bool allExist();
};
