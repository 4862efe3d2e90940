#pragma once

// The clock of a command sequence, and its way to the device.

#include "commandsequence.h"

#include <QObject>
#include <QTimer>

#include <functional>

class CommandRunner : public QObject
{
    Q_OBJECT

public:
    // False with a reason for the user where the device did not accept the bytes.
    using Transmit = std::function<bool(const QByteArray &bytes, QString *reason)>;

    explicit CommandRunner(QObject *parent = nullptr);

    // pendingBytes: accepted by the device's link and not sent yet; while there are many,
    // the sequence waits.
    void setDevice(const Transmit &transmit, const std::function<qint64()> &pendingBytes);
    const Transmit &transmit() const { return m_transmit; }

    void start(const QVector<CommandSequence::Row> &rows, int rounds, int codecIndex);
    void stop();
    void setPaused(bool isPaused);
    bool isPaused() const { return m_isPaused; }
    void receive(const QByteArray &bytes, qint64 arrivalUs);

    const CommandSequence &sequence() const { return m_sequence; }
    bool isRunning() const { return m_sequence.isRunning(); }
    QByteArray reportCsv() const { return m_sequence.reportCsv(m_startUs, m_startMs); }

signals:
    void progressed(); // at the pace of the eye
    void ended();

private:
    void step();
    void arm();

    CommandSequence m_sequence;
    Transmit m_transmit;
    std::function<qint64()> m_pendingBytes;
    QTimer m_timer;
    QTimer m_progress;
    bool m_isPaused = false;
    bool m_isStepping = false;
    qint64 m_startUs = 0;
    qint64 m_startMs = 0; // since 1970
};
