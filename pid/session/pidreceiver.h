#pragma once

// Runs the parser: when a run continues, when an overlong frame is skipped, and
// when the user should know that nothing gets through (docs/adr/0010). Knows no
// meaning of a report.

#include "pidparser.h"

#include <QObject>
#include <QTimer>

#include <functional>

class PidReceiver : public QObject
{
    Q_OBJECT

public:
    // Gets each report; false ends the run.
    using Handler = std::function<bool(const PidReport &report)>;

    explicit PidReceiver(const Handler &handler, QObject *parent = nullptr);

    void append(const QByteArray &bytes, qint64 arrivalUs) { m_parser.append(bytes, arrivalUs); }
    void parse(); // as many frames as the rules of the link allow
    void clear();

public slots:
    // The frame at the front has had its time. Called by a timer.
    void timeOut();

signals:
    void lengthSkipped();
    // Nothing gets through any more until clear().
    void blocked();

private:
    bool run();

    PidParser m_parser;
    Handler m_handler;
    QTimer m_timeout;
    bool m_blockedReported = false;
};
