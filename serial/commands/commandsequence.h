#pragma once

// Commands one after the other: sends each, waits for its answer where it has one, and
// for its delay. Knows no device and no clock: says what is due at the time that it is
// given. Times are microseconds of one clock that only moves forward.
//
// A delay counts from when the command was sent, or answered; what was late by a moment
// does not shift those behind it.

#include "command.h"
#include "linematcher.h"

#include <QVector>

#include <deque>

class CommandSequence
{
public:
    // In which an expression looks for the answer, bytes.
    static constexpr int maxLine = 4096;
    // What is later than this shifts what comes behind it.
    static constexpr qint64 maxCatchUpUs = 5000;
    // Entries of the report; the oldest go.
    static constexpr int maxReport = 100 * 1000;

    struct Row
    {
        int number = 0; // of the set, from 0
        Command command;
    };

    enum class Outcome { Sent, Answered, NoAnswer, Failed };

    struct Entry
    {
        qint64 timeUs = 0; // sent
        int row = 0;
        QString name;
        int round = 0; // from 1
        Outcome outcome = Outcome::Sent;
        qint64 answerUs = 0; // since then
        QString fault;       // of Failed
    };

    // rounds: 0 until stopped. Nothing happens without rows.
    void start(const QVector<Row> &rows, int rounds, int codecIndex, qint64 nowUs);
    void stop();
    bool isRunning() const { return m_isRunning; }
    // Why it has ended before its end, for the user.
    QString fault() const { return m_fault; }

    // The bytes that are to be sent now; empty where none are, and nextUs() tells when
    // to ask again. Passes over a time that was waited for in vain.
    QByteArray due(qint64 nowUs);
    // Of those bytes: accepted by the device or not.
    void handleSent(bool isAccepted, const QString &reason, qint64 nowUs);
    void receive(const QByteArray &bytes, qint64 arrivalUs);
    // -1: never, it has ended.
    qint64 nextUs() const;

    // While the device is not there nothing is due, and no answer is awaited: the
    // command that was sent last is sent again.
    void setPaused(bool isPaused, qint64 nowUs);

    int row() const; // the present one's number; -1 while it does not run
    int round() const { return m_round; }
    int rounds() const { return m_rounds; }
    qint64 sent() const { return m_sent; } // commands

    const std::deque<Entry> &report() const { return m_report; }
    // CSV: time (UTC of the given start), row, name, round, outcome, milliseconds.
    QByteArray reportCsv(qint64 startUs, qint64 startMsSinceEpoch) const;

private:
    enum class State { Due, Sending, Awaiting, Delaying };

    const Command &command() const { return m_rows.at(m_index).command; }
    bool hasText();
    bool hasExpression();
    QString decoded(const QByteArray &bytes) const;
    void finish(Outcome outcome, qint64 answerUs, qint64 fromUs);
    void handleNoAnswer(qint64 nowUs);
    void next(qint64 nowUs);
    void end(const QString &fault);

    QVector<Row> m_rows;
    int m_rounds = 0;
    int m_codecIndex = 0;
    bool m_isRunning = false;
    bool m_isPaused = false;
    State m_state = State::Due;
    int m_index = 0;
    int m_round = 0;
    int m_attempt = 0;   // of the present command, from 0
    qint64 m_dueUs = 0;  // the end of what is waited for
    qint64 m_sentUs = 0; // of the present command
    qint64 m_sent = 0;
    QByteArray m_received; // since then
    QByteArray m_awaited;  // as bytes
    LineMatcher m_expression;
    QString m_fault;
    std::deque<Entry> m_report;
};
