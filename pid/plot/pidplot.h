#pragma once

// The chart of the PID page: a view of what a PidRecorder shows, as ten curves
// over the last ten seconds: targets (graphs 0 to 4) and actual values (5 to 9)
// of five channels. Owns the curves' copies of the samples and the axes; keys
// are seconds after the recorder's origin.
//
// Live, it follows new samples: curves and axes are updated once for each
// picture, not for each sample. Dragging, or zooming the time axis, holds the
// view: the curves stand still, and the recorder keeps what is shown.
// Zooming the value axis only fixes that axis. returnToLive() ends both.

#include "halograph.h"

#include <QElapsedTimer>
#include <QTimer>

#include <array>

class PidRecorder;

class PidPlot : public QCustomPlot
{
    Q_OBJECT

public:
    static constexpr int channels = 5;
    static constexpr int curves = 2 * channels;
    static constexpr double windowSeconds = 10.0;

    enum Follow {
        Live,       // time and values follow
        ValueFixed, // time follows, the value axis stays as it was zoomed
        Held,       // nothing moves
    };

    // The recorder must outlive the plot.
    explicit PidPlot(PidRecorder *recorder, QWidget *parent = nullptr);

    // Colors of axes and grids: "black", "white" or "yellow"; another name
    // changes nothing.
    void setPlotStyle(const QString &style);
    void setCurve(int graph, const QColor &color, bool shown, const QString &name);

    // The text of an empty chart, by the state of the port.
    void showHint(bool portOpen);

    // The value axis includes all shown curves, instead of only the actual values
    // of the channel that reported last.
    void setFitAll(bool fitAll);

    Follow follow() const { return m_follow; }
    void returnToLive();

    // The time of the point nearest to the key, and the values there of the
    // shown curves that reach it, as rich text; empty where there is none.
    QString readOut(double key) const;
    void setCursorAt(double key); // a line across the chart
    void hideCursor();

    // The chart with a legend below it.
    enum Format { Png, Pdf };
    bool writePicture(QIODevice *device, Format format);

    int pictures() const { return m_pictures; } // drawn so far

public slots:
    // Adds new samples to the curves and draws them. Called by a timer soon after
    // a sample.
    void drawNew();

signals:
    void followChanged(PidPlot::Follow follow);
    void curvesCreated(); // again: colors, names and visibility are to be set
    void drawn();         // a picture of new samples

protected:
    void leaveEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void setUpAxes();
    void recreateCurves();
    void noteSample(int channel);
    void addNewPoints();
    void addNewPoints(int channel);
    void axisChangedByUser(bool timeAxis);
    void setFollow(Follow follow);
    void fitAxes();
    void requestPicture();
    bool writePdf(QIODevice *device);

    PidRecorder *m_recorder;
    QColor m_ground;
    QVector<HaloGraph *> m_graphs;
    std::array<qint64, channels> m_added{}; // number of the next sample to be added
    QCPItemStraightLine *m_cursor;
    QCPItemText *m_hint; // in an empty chart
    QTimer m_frame;
    QElapsedTimer m_sinceDrawn;
    int m_lastChannel = -1; // that reported
    int m_lastGraph = -1;   // that the value axis is fitted to, if it is shown
    bool m_fitAll = false;
    bool m_isFitting = false;
    Follow m_follow = Live;
    int m_pictures = 0;
};
