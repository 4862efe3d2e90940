#pragma once

// The work area of the PID page: the chart with its zoom axis, the state of
// following, the read-out below the mouse and the list of curves. Shows what the
// recorder holds; owns no sample and knows no board.

#include "notice.h"

#include <QWidget>

#include <array>

class PidAnalysisPane;
class PidCurveList;
class PidPlot;
class PidRecorder;
struct PidGains;
class PidViewMenu;
class QCheckBox;
class QComboBox;
class QHBoxLayout;
class QLabel;
class QPushButton;
class QSplitter;
class StateIndicator;

class PidChart : public QWidget
{
    Q_OBJECT

public:
    static constexpr int channels = 5;

    // The recorder must outlive the chart.
    explicit PidChart(PidRecorder *recorder, QWidget *parent = nullptr);

    void showCurve(int graph, bool shown);
    void setZoomAxis(int index); // 0 time, else values
    void flipZoomAxis();
    // The values below a position on the plot; none outside the axes.
    void showReadOut(const QPoint &position);

    // As PNG, or as PDF by its name. False and the reason where the file could
    // not be written; an existing one then stays.
    bool savePicture(const QString &fileName, QString *error) const;

    PidPlot *plot() const { return m_plot; }
    PidCurveList *curveList() const { return m_curves; }
    QComboBox *zoomBox() const { return m_zoom; }
    QCheckBox *fitAllBox() const { return m_fitAll; }
    QPushButton *foldButton() const { return m_fold; }
    void addTool(QWidget *tool); // beside it
    StateIndicator *state() const { return m_state; }
    PidViewMenu *viewMenu() const { return m_view; }
    void load();    // shows what the settings hold
    void showAll(); // of the record

signals:
    void notify(const Notice &notice);
    void gainsProposed(int channel, const PidGains &gains);

private:
    void buildUi();
    void buildTopRow();
    void applyCurve(int graph);
    void applyCurves();
    void showFollow();
    void showValues();
    void clearValues();
    void askForNames();
    void openAnalysis(bool open);

    PidRecorder *m_recorder;
    QHBoxLayout *m_row;
    PidPlot *m_plot;
    QSplitter *m_split;
    PidAnalysisPane *m_analysis = nullptr; // made when it is opened
    PidViewMenu *m_view;
    PidCurveList *m_curves;
    QComboBox *m_zoom;
    QCheckBox *m_fitAll;
    QPushButton *m_fold;
    QLabel *m_follow;
    QPushButton *m_live;
    StateIndicator *m_state;
    std::array<qint64, channels> m_valuesShown{}; // samples before this number
};
