#pragma once

// The row below the PID chart that starts, stops, clears and saves. Does nothing
// by itself; the start button's text is the page's run state.

#include <QWidget>

class QCheckBox;
class QPushButton;

class PidOperations : public QWidget
{
    Q_OBJECT

public:
    explicit PidOperations(QWidget *parent = nullptr);

    bool isIdle() const; // the start button reads "启动"
    void setIdle(bool idle);
    void setOpenState(bool open);

    QPushButton *startButton() const { return m_start; }
    QPushButton *resetButton() const { return m_reset; }
    QCheckBox *stopShowBox() const { return m_stopShow; }
    QPushButton *clearButton() const { return m_clear; }
    QPushButton *exportButton() const { return m_export; }
    QPushButton *pictureButton() const { return m_picture; }

private:
    QPushButton *m_start;
    QPushButton *m_reset;
    QCheckBox *m_stopShow;
    QPushButton *m_clear;
    QPushButton *m_export;
    QPushButton *m_picture;
};
