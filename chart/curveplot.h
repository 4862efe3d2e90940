#pragma once

// A chart of curves over a key axis, in the colors of the skin: axes, cursor,
// hint, read-out, pictures in files, and how it follows new points. What the
// curves show, and which part of it, is said by the derived class.
//
// Live, curves and axes are updated once for each picture, not for each point.
// Dragging holds the view: the curves stand still. Zooming the value axis only
// fixes that axis. returnToLive() ends both.

#include "halograph.h"

#include <QElapsedTimer>
#include <QTimer>

class CurvePlot : public QCustomPlot
{
    Q_OBJECT

public:
    enum Follow {
        Live,       // keys and values follow
        ValueFixed, // keys follow, the value axis stays as it was zoomed
        Held,       // nothing moves
    };

    explicit CurvePlot(QWidget *parent = nullptr);

    // Colors of axes and grids: "black", "white" or "yellow"; another name
    // changes nothing.
    void setPlotStyle(const QString &style);
    QColor ground() const { return m_ground; }
    void setCurve(int graph, const QColor &color, bool shown, const QString &name);

    Follow follow() const { return m_follow; }
    void returnToLive();

    void setCursorAt(double key); // a line across the chart
    void hideCursor();

    // The chart with a legend below it.
    enum Format { Png, Pdf };
    bool writePicture(QIODevice *device, Format format);
    // As PNG, or as PDF by its name. False and the reason where the file could
    // not be written; an existing one then stays.
    bool savePicture(const QString &fileName, QString *error);

    int pictures() const { return m_pictures; } // drawn so far

public slots:
    // Adds new points to the curves and draws them. Called by a timer soon after
    // requestPicture().
    void drawNew();

signals:
    void followChanged(CurvePlot::Follow follow);
    void drawn(); // a picture of new points

protected:
    virtual void addNewPoints() = 0;
    // The ranges of the axes, by what is to be followed.
    virtual void fitAxes() = 0;
    // Before the state changes.
    virtual void prepareFollow(Follow follow) { Q_UNUSED(follow) }
    // The user has moved or zoomed the key axis.
    virtual void handleKeyRange(const QCPRange &range, const QCPRange &before);

    // Smoothing doubles the cost of a picture and is not visible among many points.
    void setMaxSmooth(int points) { m_maxSmooth = points; }
    HaloGraph *addCurve();
    void removeCurve(int graph);
    void clearCurves();
    void setHint(const QString &text);
    void setHintVisible(bool visible) { m_hint->setVisible(visible); }
    void setRanges(const QCPRange &keys, const QCPRange &values); // not by the user
    void setFollow(Follow follow);
    void requestPicture();
    // While true, changes of axes are the program's.
    bool &isFitting() { return m_isFitting; }

    struct ReadOutRow
    {
        QColor color;
        QString name;
        QString value;
    };
    // Rich text; empty without rows.
    static QString readOutTable(const QString &title, const QVector<ReadOutRow> &rows);

    void leaveEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void setUpAxes();
    bool writePdf(QIODevice *device);

    QColor m_ground;
    QVector<HaloGraph *> m_graphs;
    QCPItemStraightLine *m_cursor;
    QCPItemText *m_hint; // in an empty chart
    QTimer m_frame;
    QElapsedTimer m_sinceDrawn;
    qint64 m_pictureMs = 0; // that drawing the last one took
    int m_maxSmooth = 2000;
    bool m_isFitting = false;
    Follow m_follow = Live;
    int m_pictures = 0;
};
