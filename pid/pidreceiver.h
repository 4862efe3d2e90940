#pragma once

// Drives the parser: when a run goes on, when an overlong frame is given up, and
// when the user should know that nothing comes through (docs/adr/0010). What a
// report means is the owner's affair.

#include "pidparser.h"

#include <QObject>
#include <QTimer>

#include <functional>

class PidReceiver : public QObject
{
    Q_OBJECT

public:
    // Gets each report; false ends the run. late: it came so long ago that a
    // measured value does not belong to the present any more.
    using Handler = std::function<bool(const PidReport &report, bool late)>;

    explicit PidReceiver(const Handler &handler, QObject *parent = nullptr);

    void append(const QByteArray &bytes) { m_parser.append(bytes); }
    void parse(); // uses up what has been received, as far as it goes
    void clear();

signals:
    void lengthGivenUp();
    // Nothing can come through any more until clear().
    void blocked();

private:
    bool run();
    void losePatience();

    PidParser m_parser;
    Handler m_handler;
    QTimer m_patience;
    bool m_late = false;
    bool m_blockedTold = false;
};
