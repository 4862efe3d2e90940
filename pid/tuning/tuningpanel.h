#pragma once

// "整定建议": fits a model to the chosen run, shows it over the curve with its residual,
// and offers gains by a named rule in the board's own form. Sends nothing: gains go to
// the fields, where the user looks at them first.

#include "fitjob.h"
#include "pidframe.h"
#include "tuningrules.h"

#include <QWidget>

class PidRecorder;
class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QSlider;
class QSpinBox;
class RunFigures;
struct PidRun;

class TuningPanel : public QWidget
{
    Q_OBJECT

public:
    // Recorder and figures outlive the panel.
    TuningPanel(const PidRecorder *recorder, RunFigures *figures, QWidget *parent = nullptr);

    void load(); // shows what the settings hold
    // The run that is looked at; 0 for none.
    void setRun(int id);

signals:
    // The model's response: microseconds since 1970, values. Empty for none.
    void fitted(const QVector<QPointF> &curve);
    void gainsProposed(int channel, const PidGains &gains);

private:
    void buildUi();
    QLayout *buildChoices();
    QLayout *buildResult();
    void connectParts();
    void store();
    void analyze();
    void showFit(const PlantFit &fit);
    void showTuning();
    void clearResult(const QString &text);
    double periodOf(const PidRun &run) const; // seconds; 0 where unknown
    Tuning tuning(const PidRun &run, QString *reason) const;
    QString modelText(const PidRun &run) const;

    const PidRecorder *m_recorder;
    RunFigures *m_figures;
    FitJob *m_job;
    int m_run = 0;
    int m_fittedRun = 0;
    Step m_step;
    PlantFit m_fit;
    ParallelGains m_boardGains; // of the fitted run, as a parallel controller
    PidGains m_proposed;

    QLabel *m_which;
    QComboBox *m_loop;
    QComboBox *m_form;
    QComboBox *m_unit;
    QSpinBox *m_limit;
    QPushButton *m_analyze;
    QLabel *m_model;
    QComboBox *m_rule;
    QComboBox *m_controller;
    QSlider *m_speed;
    QLabel *m_result;
    QPushButton *m_apply;
};
