#pragma once

// The chart of the PID page: a view of what a PidRecorder shows, as ten curves
// over the last ten seconds: targets (graphs 0 to 4) and actual values (5 to 9)
// of five channels. Owns the curves' copies of the samples and the axes; keys
// are seconds after the recorder's origin.
//
// Held, the recorder keeps what is shown; see CurvePlot.

#include "curveplot.h"

#include <array>

class PidRecorder;

class PidPlot : public CurvePlot
{
    Q_OBJECT

public:
    static constexpr int channels = 5;
    static constexpr int curves = 2 * channels;
    static constexpr double windowSeconds = 10.0;

    // The recorder must outlive the plot.
    explicit PidPlot(PidRecorder *recorder, QWidget *parent = nullptr);

    // The text of an empty chart, by the state of the port.
    void showHint(bool portOpen);

    // The value axis includes all shown curves, instead of only the actual values
    // of the channel that reported last.
    void setFitAll(bool fitAll);

    // The time of the point nearest to the key, and the values there of the
    // shown curves that reach it, as rich text; empty where there is none.
    QString readOut(double key) const;
signals:
    void curvesCreated(); // again: colors, names and visibility are to be set

protected:
    void addNewPoints() override;
    void fitAxes() override;
    void prepareFollow(Follow follow) override;

private:
    void setUpAxes();
    void recreateCurves();
    void noteSample(int channel);
    void addNewPoints(int channel);

    PidRecorder *m_recorder;
    std::array<qint64, channels> m_added{}; // number of the next sample to be added
    int m_lastChannel = -1;                 // that reported
    int m_lastGraph = -1;                   // that the value axis is fitted to, if it is shown
    bool m_fitAll = false;
};
