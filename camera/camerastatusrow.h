#pragma once

// The row above the pictures: frame rate, data rate, frame number, what was not
// shown, what was wrong, and whether the link is open. Shows what it is told.

#include <QWidget>

class QLabel;
class QPushButton;
class StateIndicator;

// What came and was not shown.
struct CameraLosses
{
    qint64 skipped = 0;  // frames, for lack of time
    qint64 unusable = 0; // frames that could not be decoded
    qint64 partial = 0;  // frames of which the end did not come
    qint64 bytes = 0;    // that belong to no packet and no picture
};

class CameraStatusRow : public QWidget
{
    Q_OBJECT

public:
    explicit CameraStatusRow(QWidget *parent = nullptr);

    QPushButton *foldButton() const { return m_fold; }
    StateIndicator *state() const { return m_state; }

    void showRates(double framesPerSecond, double bytesPerSecond);
    void showFrames(qint64 number, const CameraLosses &losses);
    // The error indicator: hidden while nothing was wrong.
    void showErrors(qint64 count, const QString &lastReason);

private:
    QPushButton *m_fold;
    QLabel *m_fps;
    QLabel *m_rate;
    QLabel *m_number;
    QLabel *m_skipped;
    QLabel *m_error;
    StateIndicator *m_state;
};
