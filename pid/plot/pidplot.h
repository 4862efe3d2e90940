#pragma once

// The chart of the PID page: ten curves over time, targets (graphs 0 to 4) and
// actual values (5 to 9) of five channels. Holds the points of the last ten
// seconds.
//
// Live, it follows what comes: axes are fitted once for each picture, not for
// each point. Dragging, or zooming the time axis, stops that: the curves stand
// still as they are, while what comes is kept aside. Zooming the value axis
// only fixes that axis. returnToLive() ends both.

#include "customplot.h"

#include <QElapsedTimer>
#include <QTimer>

class HaloGraph;

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

    explicit PidPlot(QWidget *parent = nullptr);

    // Colours of axes and grids: "black", "white" or "yellow"; another name
    // leaves them as they are.
    void setPlotStyle(const QString &style);

    // Drops all curves and makes them anew, empty. Live again.
    void recreateCurves();
    void setCurve(int graph, const QColor &colour, bool shown, const QString &name);

    // What an empty chart says, by the state of the port.
    void showHint(bool portOpen);

    // A new actual value of a channel (0 to 4) and its target at t seconds.
    void addPoint(int channel, double t, int target, int actual);

    // The value axis takes in all shown curves, instead of the actual values of
    // the channel that reported last.
    void setFitAll(bool fitAll);

    // Shown time is absolute (local) or counted from a start.
    void setTimeAbsolute(bool absolute);

    Follow follow() const { return m_follow; }
    void returnToLive();

    // The time of the point nearest to the key, and the values there of the
    // shown curves that reach it, as rich text; empty where there is nothing to
    // tell.
    QString readOut(double key) const;
    void setCursorAt(double key); // a line across the chart
    void hideCursor();

    // The chart with a legend below it.
    enum Format { Png, Pdf };
    bool writePicture(QIODevice *device, Format format);

    int pictures() const { return m_pictures; } // drawn so far

public slots:
    void drawNew(); // now, what has come; called by itself soon after a point

signals:
    void followChanged(PidPlot::Follow follow);
    void drawn(); // a picture of new points

protected:
    void leaveEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    using Points = QSharedPointer<QCPGraphDataContainer>;

    void setUpAxes();
    void axisChangedByUser(bool timeAxis);
    void setFollow(Follow follow);
    void fitAxes();
    void requestPicture();
    bool writePdf(QIODevice *device);

    QColor m_ground;
    QVector<HaloGraph *> m_graphs;
    QVector<Points> m_points; // what comes; the graphs show it, or a copy while held
    QCPItemStraightLine *m_cursor;
    QCPItemText *m_hint; // where nothing is to be seen yet
    QTimer m_frame;
    QElapsedTimer m_sinceDrawn;
    double m_lastTime = 0;
    int m_lastGraph = -1; // that the value axis is fitted to, if it is shown
    bool m_fitAll = false;
    bool m_fitting = false;
    Follow m_follow = Live;
    int m_pictures = 0;
};
