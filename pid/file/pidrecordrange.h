#pragma once

// The samples that a record held at one moment, read from it in the order of time of all
// channels while it goes on recording. Owns a block of each channel. What the record drops
// before it was read is left out and counted.

#include "pidrecorder.h"

#include <QObject>
#include <QVector>

class PidRecordRange
{
public:
    // The record must outlive this.
    explicit PidRecordRange(const PidRecorder *recorder);
    Q_DISABLE_COPY_MOVE(PidRecordRange)

    // The channel of the next sample; -1 at the end, or where error() has a reason.
    int earliest();
    // The next sample of a channel that earliest() returned; taken once for each call of it.
    const PidSample &peek(int channel) const
    {
        const Channel &own = m_channels[size_t(channel)];
        return own.block.at(own.at);
    }
    const PidSample &take(int channel)
    {
        Channel &own = m_channels[size_t(channel)];
        return own.block.at(own.at++);
    }
    // What is in memory of it, at least one sample; `number` is that of the first.
    QVector<PidSample> takeBlock(int channel, qint64 *number);

    // Samples of all channels at that moment; of one; the number of its first one.
    qint64 count() const { return m_count; }
    qint64 count(int channel) const;
    qint64 begin(int channel) const { return m_channels.at(size_t(channel)).begin; }
    qint64 end(int channel) const { return m_channels.at(size_t(channel)).end; }
    qint64 pending() const; // not read yet
    qint64 leftOut() const { return m_leftOut; }
    // In the user's language: a block could not be read back, or the record was cleared.
    const QString &error() const { return m_error; }

private:
    struct Channel
    {
        qint64 begin = 0;
        qint64 end = 0;
        qint64 next = 0; // behind the block
        QVector<PidSample> block;
        int at = 0; // the next one of the block

        bool isUsed() const { return at == block.size(); }
    };

    bool fill(int channel);

    const PidRecorder *m_recorder;
    std::array<Channel, PidRecorder::channels> m_channels;
    qint64 m_count = 0;
    qint64 m_leftOut = 0;
    QString m_error;
    QObject m_context; // of the connection to the record; last, so that it goes first
};
