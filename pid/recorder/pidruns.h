#pragma once

// The runs of a session: what lies between two steps of a channel's target, or
// between its start and its stop. Follows events and samples as they are recorded
// and owns what the user says about a run: name, hidden, reference. Knows no
// sample's storage; a run names its samples by their numbers.

#include "pidframe.h"
#include "pidsample.h"

#include <QObject>
#include <QString>
#include <QVector>

#include <array>

struct PidChannelParams;
struct PidEvent;

struct PidRun
{
    int id = 0;           // from 1, never used again in a session
    int channel = 0;      // 0 to 4
    qint64 first = 0;     // number of its first sample
    qint64 end = -1;      // and of the one behind its last; -1 while it goes on
    qint64 beginUs = 0;   // of the step or start
    qint64 endUs = 0;     // of its last sample
    bool isStart = false; // began with a start, else with a step of the target
    qint32 before = 0;    // target before the step
    qint32 target = 0;
    PidGains gains; // at its begin
    qint32 period = 0;
    bool gainsChanged = false; // while it went on
    QString name;              // the user's
    bool isHidden = false;
    bool isReference = false; // laid over the current one

    bool isOpen() const { return end < 0; }
};

class PidRuns : public QObject
{
    Q_OBJECT

public:
    static constexpr int maxRuns = 2000; // the oldest without a name goes first
    static constexpr int minSamples = 5; // less is no run

    using QObject::QObject;

    // An event, and the parameters of its channel behind it. `next` is the number of
    // the channel's next sample.
    void addEvent(const PidEvent &event, const PidChannelParams &params, qint64 next);
    void addSample(int channel, const PidSample &sample, const PidChannelParams &params, qint64 number);
    // The connection ended: so does every run.
    void endAll();
    void clear();
    // Those of a session file; ends no run. They get new identities.
    void replace(const QVector<PidRun> &runs);

    const QVector<PidRun> &runs() const { return m_runs; } // by their begin; open ones included
    const PidRun *find(int id) const;
    // The newest one of a channel; nullptr where there is none.
    const PidRun *newest(int channel) const;
    // A report or a command said that the channel runs; not where it stopped or said nothing.
    bool isRunning(int channel) const { return m_channels.at(size_t(channel)).state == Running; }

    void rename(int id, const QString &name);
    void setHidden(int id, bool hidden);
    void setReference(int id, bool reference);
    void remove(int id);
    // The user has named a run since the last call of setSaved().
    bool isEdited() const { return m_isEdited; }
    void setSaved(bool isSaved = true) { m_isEdited = !isSaved; }

signals:
    void changed(); // the list, or what the user said of a run
    void runningChanged();

private:
    enum State { Unknown, Running, Stopped };
    struct Channel
    {
        State state = Unknown;
        qint64 startSentUs = 0; // by this program; 0 where the board did it
        qint32 target = 0;
        bool hasTarget = false;
        int open = 0;    // id of its open run; 0 for none
        qint64 next = 0; // number of its next sample
    };

    PidRun *get(int id);
    void begin(int channel, qint64 us, bool isStart, const PidChannelParams &params, qint64 next);
    void close(int channel, qint64 next);
    void setState(int channel, State state);

    std::array<Channel, 5> m_channels;
    QVector<PidRun> m_runs;
    int m_lastId = 0;
    bool m_isEdited = false;
};
