#pragma once

// Drives the parser: when a run goes on, and when the user should know that a
// length can't be true (docs/adr/0010). What a report means is the owner's
// affair.

#include "pid/pidparser.h"

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

    void append(const QByteArray &bytes) { m_parser.append(bytes); }
    void parse(); // uses up what has been received, as far as it goes
    void clear();

signals:
    // Nothing can come through any more until clear().
    void blocked();

private:
    bool run();
    void tellBlocked();

    PidParser m_parser;
    Handler m_handler;
    QTimer m_patience;
    bool m_blockedTold = false;
};
