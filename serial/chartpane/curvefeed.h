#pragma once

// Reads the lines of a record as they come, a slice at a time, and keeps the
// points of their curves. Begins with the newest lines that are there. Lines that
// were sent are not looked at. Owns what it read; clearing the record clears
// nothing here.
//
// Paused, it reads nothing: the lines stay in the record and are read later. Where
// too many are pending, older ones are passed over.

#include "curvepoints.h"
#include "linestore.h"
#include "numberlines.h"

#include <QObject>
#include <QTimer>

class QElapsedTimer;

class CurveFeed : public QObject
{
    Q_OBJECT

public:
    static constexpr int maxOldLines = 100000; // read at the beginning

    // The record outlives the feed.
    explicit CurveFeed(const LineStore &record, QObject *parent = nullptr);

    // Drops all curves and reads the newest lines again, in another form.
    void start(NumberLines::Form form, const QString &expression);
    // Drops all curves and goes on with the next line.
    void clear();
    void setPaused(bool paused);
    // The record has changed.
    void follow();
    // Reads for a few milliseconds. Called by a timer.
    void readSlice();

    const QVector<CurvePoints> &curves() const { return m_curves; }
    const NumberLines &lines() const { return m_lines; }
    qint64 passedOver() const { return m_passedOver; } // lines

signals:
    void curvesDropped();
    void changed(); // there are new points, or counts

private:
    void beginBehind(qint64 line);
    void readLines(const QElapsedTimer &spent);

    const LineStore &m_record;
    NumberLines m_lines;
    QVector<CurvePoints> m_curves;
    QTimer m_timer;
    int m_generation = 0;
    qint64 m_base = 0; // lines read before the record was cleared
    qint64 m_next = 0; // of the record
    qint64 m_passedOver = 0;
    bool m_isPaused = false;
};
