#pragma once

// The chart of the PID page: a view of what a PidRecorder holds, as ten curves:
// targets (graphs 0 to 4) and actual values (5 to 9) of five channels. Behind them
// runs of the past are laid over as pale curves. Owns the curves' copies of the
// points and the axes; keys are seconds after the recorder's origin.
//
// Live, it shows the ten seconds of PidRecorder::samples(), or another span of the
// record, reduced to what the pixels show. Held, by dragging or zooming, it shows
// what of the record the key axis spans.

#include "curveplot.h"

#include "pidrecorder.h"
#include "unitaxes.h"

#include <array>

class PidPlot : public CurvePlot
{
    Q_OBJECT

public:
    static constexpr int channels = 5;
    static constexpr int curves = 2 * channels;
    static constexpr double windowSeconds = 10.0;

    // A run as a pale curve of its actual values.
    struct Overlay
    {
        int channel; // whose color it has
        qint64 fromUs;
        qint64 toUs;
        qint64 shiftUs; // added to its times
        QString name;
    };
    // A curve of a model over the measured one.
    struct Fit
    {
        QVector<QPointF> points; // microseconds since 1970, values
        QString name;
    };

    // The recorder must outlive the plot.
    explicit PidPlot(PidRecorder *recorder, QWidget *parent = nullptr);

    // The text of an empty chart, by the state of the port.
    void showHint(bool portOpen);

    // The value axis includes all shown curves, instead of only the actual values
    // of the channel that reported last.
    void setFitAll(bool fitAll);

    // How much is shown live; 0 for everything.
    void setWindow(int seconds);
    // Holds the view and shows a part of the record.
    void showRange(qint64 fromUs, qint64 toUs);
    void setOverlays(const QVector<Overlay> &overlays);
    void setFit(const Fit &fit);
    // A value axis for each unit, by channel; an empty list for one axis.
    void setUnits(const QStringList &units);

    // The time of the point nearest to the key, and the values there of the
    // shown curves that reach it, as rich text; empty where there is none.
    QString readOut(double key) const;

signals:
    void curvesCreated(); // again: colors, names and visibility are to be set

protected:
    void addNewPoints() override;
    void fitAxes() override;
    void prepareFollow(Follow follow) override;
    void handleKeyRange(const QCPRange &range, const QCPRange &before) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    bool showsRecord() const;
    void setUpAxes();
    void recreateCurves();
    void noteSample(int channel);
    void addNewPoints(int channel);
    void load(const QCPRange &keys);
    void loadExtras(const QCPRange &keys);
    QCPRange liveKeys() const;
    QVector<QCPGraphData> graphData(const QVector<SampleStore::Point> &points, qint64 shiftUs = 0) const;
    void addExtras();
    void matchExtras();
    void fitValues();

    PidRecorder *m_recorder;
    std::array<qint64, channels> m_added{}; // number of the next sample to be added
    int m_lastChannel = -1;                 // that reported
    int m_lastGraph = -1;                   // that the value axis is fitted to, if it is shown
    bool m_fitAll = false;
    int m_window = int(windowSeconds);
    bool m_isThinned = false; // the curves have points of the record
    QVector<Overlay> m_overlays;
    Fit m_fit;
    UnitAxes m_axes;
};
