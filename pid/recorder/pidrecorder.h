#pragma once

// What the boards of a PID page did: samples of five channels, the latest
// parameters of each, and the events (started, stopped, gains, target, period)
// between. Owns all of it; chart and export only read. Times are microseconds
// since 1970 and come from the caller. Knows no frame and no chart.

#include "pidframe.h"
#include "pidsamples.h"

#include <QObject>

#include <array>
#include <deque>
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
    static constexpr int maxEvents = 1000; // older ones are dropped
    using Channels = std::array<PidSamples, channels>;

    using QObject::QObject;

    // An actual value, and the target of the channel at that time.
    void addActual(int channel, qint32 actual, qint64 us);
    void addEvent(const PidEvent &event);
    PidChannelParams &params(int channel) { return m_params.at(static_cast<size_t>(channel)); }
    const PidChannelParams &params(int channel) const { return m_params.at(static_cast<size_t>(channel)); }

    // Drops samples and events, also those kept by setHeld().
    void clear();

    // While held, shown() stays as it was. What arrives is recorded all the same.
    void setHeld(bool held);

    const Channels &samples() const { return m_samples; }
    const Channels &shown() const { return m_held ? *m_held : m_samples; }
    const std::deque<PidEvent> &events() const { return m_events; }
    quint64 recorded() const { return m_recorded; } // actual values, also dropped ones

    // The time that counts as 0; 1970 while unset.
    bool hasOrigin() const { return m_originUs.has_value(); }
    void setOrigin(qint64 us) { m_originUs = us; }
    double secondsOf(qint64 us) const { return static_cast<double>(us - m_originUs.value_or(0)) / 1e6; }

signals:
    void sampleAdded(int channel);
    void cleared();

private:
    Channels m_samples;
    std::optional<Channels> m_held;
    std::deque<PidEvent> m_events;
    std::array<PidChannelParams, channels> m_params;
    std::optional<qint64> m_originUs;
    quint64 m_recorded = 0;
};
