#pragma once

// Below the chart: the runs of the record and the suggestion of gains. Wires both to
// the chart: the run that is looked at, references laid over it, the fitted curve.

#include "notice.h"

#include <QTabWidget>
#include <QTimer>

class PidPlot;
class PidRecorder;
class RunPanel;
class TuningPanel;
struct PidGains;

class PidAnalysisPane : public QTabWidget
{
    Q_OBJECT

public:
    // Recorder and plot outlive the pane.
    PidAnalysisPane(PidRecorder *recorder, PidPlot *plot, QWidget *parent = nullptr);

    void load(); // shows what the settings hold

signals:
    void notify(const Notice &notice);
    void gainsProposed(int channel, const PidGains &gains);

private:
    void showRun(int id);
    void showOverlays();

    PidRecorder *m_recorder;
    PidPlot *m_plot;
    RunPanel *m_runs;
    TuningPanel *m_tuning;
    QTimer m_overlays; // a ramp makes a run with each report
    int m_shown = 0;   // the run that is looked at; 0 for the newest one of each channel
};
