#pragma once

// What the boards of a PID page did: all samples of five channels, the latest
// parameters of each, the events (started, stopped, gains, target, period) between,
// and the runs found in them. Owns all of it; chart, analysis and files only read.
// Times are microseconds since 1970 and come from the caller. Knows no frame and no
// chart.
//
// Two things are recorded of a sample: the record has all of them, up to a limit;
// samples() are those that the live view of ten seconds shows, which leaves out what
// arrived while the display was stopped or before it was cleared.

#include "pidframe.h"
#include "pidruns.h"
#include "pidsamples.h"
#include "samplefile.h"
#include "samplestore.h"

#include <QObject>

#include <array>
#include <deque>
#include <memory>
#include <optional>

struct PidChannelParams // as last sent or reported
{
    PidGains gains;
    qint32 target = 0;
    qint32 period = 0; // as last reported
};

struct PidEvent
{
    enum Kind { Started, Stopped, Gains, Target, Period };

    Kind kind;
    int channel; // 0 to 4
    qint64 us;
    bool isReport;    // by the board; else sent to it
    PidGains gains{}; // of Gains
    qint32 value = 0; // of Target and Period
};

class PidRecorder : public QObject
{
    Q_OBJECT

public:
    static constexpr int channels = PidFrame::channels;
    static constexpr int maxEvents = 100000;       // older ones are dropped
    static constexpr qint64 maxInMemory = 4000000; // samples; older ones are in a file
    using Channels = std::array<PidSamples, channels>;

    explicit PidRecorder(QObject *parent = nullptr);

    // An actual value, and the target of the channel at that time.
    void addActual(int channel, qint32 actual, qint64 us, bool isShown = true);
    // A report that repeats what is known makes runs, but no event.
    void addEvent(const PidEvent &event);
    PidChannelParams &params(int channel) { return m_params.at(static_cast<size_t>(channel)); }
    const PidChannelParams &params(int channel) const { return m_params.at(static_cast<size_t>(channel)); }

    // Drops what the live view shows, also what is kept by setHeld(). The record stays.
    void clear();
    // Drops everything but parameters and origin.
    void clearRecord();

    // While held, shown() stays as it was. What arrives is recorded all the same.
    void setHeld(bool held);

    const Channels &samples() const { return m_samples; }
    const Channels &shown() const { return m_held ? *m_held : m_samples; }
    // ---- the record

    const SampleStore &record(int channel) const { return m_record.at(static_cast<size_t>(channel)); }
    const SampleFile &file() const { return *m_file; }
    PidRuns *runs() const { return m_runs; }
    // Samples of all channels that the record may hold; the oldest are dropped beyond.
    void setLimit(qint64 samples);
    qint64 limit() const { return m_limit; }
    qint64 held() const;
    qint64 dropped() const { return m_dropped; } // since the record began
    // A session from a file: events and samples in the order of time, without making runs.
    void restoreSample(int channel, const PidSample &sample);
    void restoreEvent(const PidEvent &event);
    // Replaces the record, its runs and the origin by those of another recorder, which is
    // left with nothing. Parameters and limit stay. Emits recordCleared(), then cleared().
    void takeOver(PidRecorder *other);

    const std::deque<PidEvent> &events() const { return m_events; }
    quint64 recorded() const { return m_recorded; } // actual values, also dropped ones

    // The time that counts as 0; 1970 while unset.
    bool hasOrigin() const { return m_originUs.has_value(); }
    qint64 origin() const { return m_originUs.value_or(0); }
    void setOrigin(std::optional<qint64> us) { m_originUs = us; }
    double secondsOf(qint64 us) const { return static_cast<double>(us - m_originUs.value_or(0)) / 1e6; }
    // The inverse, within the times that samples can have.
    qint64 usOf(double seconds) const;

signals:
    void sampleAdded(int channel);
    void cleared();
    void recordCleared();                    // or replaced: numbers of samples begin again
    void recordTrimmed();                    // the first time that samples are dropped
    void diskRefused(const QString &reason); // the first time; memory holds less than the limit

private:
    bool append(int channel, const PidSample &sample);
    void makeRoom();
    bool dropOldest();

    std::unique_ptr<SampleFile> m_file;
    std::array<SampleStore, channels> m_record;
    PidRuns *m_runs;
    qint64 m_limit = 50000000;
    qint64 m_dropped = 0;
    bool m_hasDisk = true;
    Channels m_samples;
    std::optional<Channels> m_held;
    std::deque<PidEvent> m_events;
    // By channel and kind: what the board reported last, unless something was sent since.
    std::array<std::array<std::optional<PidEvent>, 5>, channels> m_reported;
    std::array<PidChannelParams, channels> m_params;
    std::optional<qint64> m_originUs;
    quint64 m_recorded = 0;
};
