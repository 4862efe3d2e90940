#pragma once

// The chart of the numbers of a log. Shows what of the feed's points the axes
// span, reduced to what the pixels can show; draws nothing while it is hidden.
//
// Live, it shows all points, or the newest ones of the span to which the key axis
// was zoomed. Held, the axes are the user's.

#include "curveplot.h"

#include "curvepoints.h"

class CurveFeed;

class LogPlot : public CurvePlot
{
    Q_OBJECT

public:
    // The feed outlives the plot.
    explicit LogPlot(const CurveFeed *feed, QWidget *parent = nullptr);

    // As the user sees the curve; to be called for each new one.
    void setStyleOf(int curve, const QColor &color, bool shown, const QString &name);
    void dropCurves();

    using Axis = CurvePoints::Axis;
    void setAxis(Axis axis);
    // All points of the shown curves.
    void fit();
    void hold() { setFollow(Held); }
    // There are new points.
    void refresh();
    // Shows a text where there are no points.
    void showHint(const QString &text) { setHint(text); }

    // The values of the shown curves at the line that is nearest to a key, as rich
    // text; empty where there is none.
    QString readOut(double key) const;

protected:
    void addNewPoints() override;
    void fitAxes() override;
    void handleKeyRange(const QCPRange &range, const QCPRange &before) override;
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    bool isShown(int curve) const;
    QCPRange allKeys() const;
    QCPRange shownValues() const;
    void load(const QCPRange &keys);
    void fitTicker(const QCPRange &keys);

    const CurveFeed *m_feed;
    QSharedPointer<QCPAxisTickerDateTime> m_times;
    QSharedPointer<QCPAxisTicker> m_numbers;
    Axis m_axis = Axis::Time;
    double m_span = 0; // of the key axis, live; 0 for all points
};
