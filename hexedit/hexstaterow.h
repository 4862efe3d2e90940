#pragma once

// The row below the bytes: the file's name, whether it is read-only, the caret's address, the selection, the
// progress of long work with its stop button, the mode. Owns its widgets; shows what it is given.

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

    // The name is shown, the path is its tool tip. No file where the name is empty.
    void showFile(const QString &name, const QString &path, bool isModified);
    // Why the file can't be saved under its name; empty where it can.
    void showReadOnly(const QString &reason);

private:
    void showState();
    void showWork(const QString &name);
    void showProgress(int permille);

    QHexEdit *m_edit;
    QLabel *m_file;
    QLabel *m_readOnly;
    QLabel *m_address;
    QLabel *m_selection;
    QProgressBar *m_progress;
    QPushButton *m_stop;
    QPushButton *m_mode;
};
