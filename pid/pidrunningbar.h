#pragma once

// Which channels run, with a button that stops each and one that stops all; hidden
// while none does. Sends nothing itself.

#include <QWidget>

#include <array>

class PidRuns;
class QPushButton;

class PidRunningBar : public QWidget
{
    Q_OBJECT

public:
    static constexpr int channels = 5;

    // The runs outlive the bar.
    explicit PidRunningBar(const PidRuns *runs, QWidget *parent = nullptr);

signals:
    void stopRequested(int channel); // 0 to 4
    void stopAllRequested();

private:
    void showRunning();

    const PidRuns *m_runs;
    std::array<QPushButton *, channels> m_stop;
    QPushButton *m_stopAll;
};
