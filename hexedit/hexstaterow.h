#pragma once

// The row below the bytes: the file's name, the caret's address, the selection, the progress of long
// work with its stop button, the mode. Owns its widgets; shows what it is given.

#include <QWidget>

class QHexEdit;
class QLabel;
class QProgressBar;
class QPushButton;

class HexStateRow : public QWidget
{
    Q_OBJECT

public:
    explicit HexStateRow(QHexEdit *edit, QWidget *parent);

    void showFile(const QString &fileName, bool isModified); // no file where it is empty

private:
    void showState();
    void showWork(const QString &name);
    void showProgress(int permille);

    QHexEdit *m_edit;
    QLabel *m_file;
    QLabel *m_address;
    QLabel *m_selection;
    QProgressBar *m_progress;
    QPushButton *m_stop;
    QPushButton *m_mode;
};
