#pragma once

// Reads a session file into an empty record, piece by piece. Of a damaged file,
// the record gets what is intact, and notes() list what is missing. Memory is bounded by
// the record.

#include "pidsessionformat.h"

#include <QStringList>

class QIODevice;

class PidSessionReader
{
public:
    // The device is open for reading from its start, and not sequential. Both must
    // outlive this. The record keeps the newest samples within its limit.
    PidSessionReader(QIODevice *device, PidRecorder *recorder);

    // Reads about so many samples. True when all is read, or error() has a reason; the
    // record then has nothing of use.
    bool advance(int maxSamples);
    int percent() const;

    // In the user's language: why it is no session file, or has nothing that can be read.
    const QString &error() const { return m_error; }
    // What is missing or was changed, in the user's language, a sentence each.
    QStringList notes() const;
    const PidSessionInfo &info() const { return m_info; }

private:
    enum class Step { Head, Chunks, Complete };
    // What notes() count.
    struct Losses
    {
        bool isCut = false; // no end, or no further chunk can be found
        qint64 damagedChunks = 0;
        qint64 unknownChunks = 0;
        qint64 events = 0;
        qint64 runs = 0;
        qint64 times = 0;    // samples whose time goes back
        qint64 atSaving = 0; // samples
    };

    void readHead();
    int readChunk(); // the work, in samples
    int readPayload(PidSessionFormat::Chunk type, const QByteArray &payload);
    bool addSamples(const QByteArray &payload, int *count);
    bool addEvents(const QByteArray &payload);
    bool addRuns(const QByteArray &payload);
    void closeGap(int channel, qint64 missing);
    void complete();

    QIODevice *m_device;
    PidRecorder *m_recorder;
    PidSessionInfo m_info;
    PidSessionFormat::Counts m_planned{};  // samples, at the begin of saving
    PidSessionFormat::Counts m_next{};     // number of the next sample, as in the file
    PidSessionFormat::Counts m_restored{}; // samples
    std::optional<qint64> m_written;       // samples, at the end of saving
    QVector<PidRun> m_runs;
    Step m_step = Step::Head;
    Losses m_losses;
    QString m_error;
};
