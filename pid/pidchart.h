#pragma once

// The work area of the PID page: the chart with its zoom axis, the state of
// following, the read-out below the mouse and the list of curves; also what of
// it is saved. Knows values and times, no board.

#include "pidexport.h"

#include <QWidget>

#include <array>

class PidCurveList;
class PidPlot;
class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class StateIndicator;

class PidChart : public QWidget
{
    Q_OBJECT

public:
    static constexpr int channels = 5;

    explicit PidChart(QWidget *parent = nullptr);

    // A new actual value of a channel (0 to 4) and its target at t seconds.
    void addValue(int channel, double t, qint32 target, qint32 actual);
    void clear();

    void showCurve(int graph, bool shown);
    void setZoomAxis(int index); // 0 time, else values
    void flipZoomAxis();
    // The values below a place on the plot; none outside the axes.
    void showReadOut(const QPoint &place);

    // The points as they are now.
    QVector<PidExport::Channel> tables() const;
    // False where the file could not be written, and why; one that was there
    // then stays.
    bool savePicture(const QString &fileName, QString *error) const; // PNG, or PDF by its name

    PidPlot *plot() const { return m_plot; }
    PidCurveList *curveList() const { return m_curves; }
    QComboBox *zoomBox() const { return m_zoom; }
    QCheckBox *fitAllBox() const { return m_fitAll; }
    QPushButton *foldButton() const { return m_fold; }
    StateIndicator *state() const { return m_state; }

private:
    void buildUi();
    QLayout *buildTopRow();
    void applyCurve(int graph);
    void applyCurves();
    void showFollow();
    void showValues();

    PidPlot *m_plot;
    PidCurveList *m_curves;
    QComboBox *m_zoom;
    QCheckBox *m_fitAll;
    QPushButton *m_fold;
    QLabel *m_follow;
    QPushButton *m_live;
    StateIndicator *m_state;
    struct Value
    {
        qint32 target = 0;
        qint32 actual = 0;
        bool isNew = false; // not in the list of curves yet
    };
    std::array<Value, channels> m_values;
};
