#include "pidrecordrange.h"

PidRecordRange::PidRecordRange(const PidRecorder *recorder)
    : m_recorder(recorder)
{
    for (int i = 0; i < PidRecorder::channels; ++i) {
        Channel &channel = m_channels.at(size_t(i));
        channel.begin = channel.next = recorder->record(i).begin();
        channel.end = recorder->record(i).end();
        m_count += count(i);
    }
    // The numbers begin again, and would name other samples.
    QObject::connect(recorder, &PidRecorder::recordCleared, &m_context, [this] {
        if (pending() > 0)
            m_error = QStringLiteral("记录已被清空");
    });
}

qint64 PidRecordRange::count(int channel) const
{
    return end(channel) - begin(channel);
}

qint64 PidRecordRange::pending() const
{
    qint64 samples = 0;
    for (const Channel &channel : m_channels)
        samples += channel.end - channel.next + channel.block.size() - channel.at;
    return samples;
}

int PidRecordRange::earliest()
{
    int earliest = -1;
    qint64 us = 0;
    for (int i = 0; i < PidRecorder::channels; ++i) {
        Channel &channel = m_channels[size_t(i)];
        if (channel.isUsed() && channel.next < channel.end && !fill(i))
            return -1;
        if (channel.isUsed())
            continue;
        const qint64 own = channel.block.at(channel.at).us;
        if (earliest < 0 || own < us) {
            earliest = i;
            us = own;
        }
    }
    return m_error.isEmpty() ? earliest : -1;
}

QVector<PidSample> PidRecordRange::takeBlock(int channel, qint64 *number)
{
    Channel &own = m_channels.at(size_t(channel));
    *number = own.next - own.block.size() + own.at;
    const QVector<PidSample> block = own.at > 0 ? own.block.mid(own.at) : own.block;
    own.at = own.block.size();
    return block;
}

// The rest of one block of the record, which is the unit in which it is on disk.
bool PidRecordRange::fill(int channel)
{
    if (!m_error.isEmpty())
        return false;
    Channel &own = m_channels.at(size_t(channel));
    const SampleStore &record = m_recorder->record(channel);
    const qint64 first = qMin(own.end, qMax(own.next, record.begin()));
    m_leftOut += first - own.next;
    const qint64 next = qMin(own.end, (first / SampleStore::blockSamples + 1) * SampleStore::blockSamples);
    const bool isRead = record.read(first, next, m_recorder->file(), &own.block);
    own.at = 0;
    own.next = next;
    if (!isRead)
        m_error = QStringLiteral("临时文件中的样本无法读回");
    return isRead;
}
