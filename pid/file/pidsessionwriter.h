#pragma once

// Writes what a record holds at one moment as a session file, piece by piece, while the
// record goes on. Runs that are still open end where the file does.

#include "pidrecordrange.h"
#include "pidsessionformat.h"

class QIODevice;

class PidSessionWriter
{
public:
    // The device is open for writing; both must outlive this. The origin is
    // the record's.
    PidSessionWriter(const PidRecorder *recorder, const PidSessionInfo &info, QIODevice *device);

    // Writes about so many samples. True when all is written, or error() has a reason.
    bool advance(int maxSamples);
    int percent() const;
    // In the user's language.
    const QString &error() const { return m_error; }
    // Samples that the record dropped before they were written.
    qint64 leftOut() const { return m_range.leftOut(); }

private:
    enum class Step { Head, Events, Samples, Complete };

    void writeHead();
    void writeRuns();
    void writeEvents();
    void writeSamples(int maxSamples);
    void writeChunk(PidSessionFormat::Chunk type, const QByteArray &payload);
    void write(const QByteArray &bytes);

    QIODevice *m_device;
    PidSessionInfo m_info;
    PidRecordRange m_range;
    QVector<PidRun> m_runs;
    const std::deque<PidEvent> m_events;
    Step m_step = Step::Head;
    size_t m_event = 0;   // the next one
    qint64 m_samples = 0; // written
    QString m_error;
};
