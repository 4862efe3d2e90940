#pragma once

// The row above the pictures: frame rate, data rate, frame number, frames that were
// not shown, errors, and the state of the link. Counts nothing itself.

#include <QWidget>

class QHBoxLayout;
class QLabel;
class QPushButton;
class StateIndicator;

// What arrived and was not shown.
struct CameraLosses
{
    qint64 skipped = 0;  // frames that a newer one replaced
    qint64 unusable = 0; // frames that could not be decoded
    qint64 partial = 0;  // frames without an end
    qint64 bytes = 0;    // of no packet and no picture
};

class CameraStatusRow : public QWidget
{
    Q_OBJECT

public:
    explicit CameraStatusRow(QWidget *parent = nullptr);

    QPushButton *foldButton() const { return m_fold; }
    void addTool(QWidget *tool); // beside the last one
    StateIndicator *state() const { return m_state; }

    void showRates(double framesPerSecond, double bytesPerSecond);
    void showFrames(qint64 number, const CameraLosses &losses);
    // The error indicator; hidden while there are none.
    void showErrors(qint64 count, const QString &lastReason);

private:
    QHBoxLayout *m_row;
    QHBoxLayout *m_tools; // the buttons at the left
    QPushButton *m_fold;
    QLabel *m_fps;
    QLabel *m_rate;
    QLabel *m_number;
    QLabel *m_skipped;
    QLabel *m_error;
    StateIndicator *m_state;
};
