#pragma once

// Answers what the links of a page receive, by rules, while it is on: each source, a
// server's client or the sender of a datagram, by itself. Matching has a few
// milliseconds in one turn of the event loop, and answers leave in a turn of their own.

#include "answermatcher.h"
#include "answerpacer.h"
#include "echoguard.h"
#include "link.h"
#include "notice.h"

#include <QElapsedTimer>
#include <QSet>
#include <QTimer>

#include <deque>
#include <functional>
#include <map>
#include <tuple>

class LinkAnswers : public QObject
{
    Q_OBJECT

public:
    static constexpr int quietMs = 50;                          // ends a burst
    static constexpr qint64 maxQueuedBytes = 4LL * 1024 * 1024; // not matched yet

    enum class Delivery { Stream, Datagrams };
    // The page's one way of sending. False where nothing was accepted.
    using Sender = std::function<bool(const QByteArray &bytes, const Peer &to)>;

    explicit LinkAnswers(QObject *parent = nullptr);

    void watch(Link *link, Delivery delivery, const Sender &sender);

    void setRules(const AnswerRules &rules);
    // Answers in a second; more are dropped.
    void setLimit(int perSecond) { m_pacer.setLimit(perSecond); }
    // Off at first. What is pending when it is turned off or paused is dropped.
    void setOn(bool isOn);
    bool isOn() const { return m_isOn; }
    // Received and not matched yet.
    qint64 queuedBytes() const { return m_queuedBytes; }
    // While the link is used for something else.
    void setPaused(bool isPaused);
    bool isPaused() const { return m_isPaused; }

    struct Counts
    {
        qint64 hits = 0;
        qint64 sent = 0;
        qint64 dropped = 0; // over the limit, or not accepted by the link
        qint64 echoes = 0;
    };
    const Counts &counts() const { return m_counts; }
    qint64 hitsOf(const QString &ruleId) const { return m_hits.value(ruleId); }
    void clearCounts();

    int ruleCount() const { return m_matcher.ruleCount(); } // of those in use
    bool hasGivenUp(const QString &ruleId) const { return m_givenUp.contains(ruleId); }
    bool hasGivenUp() const { return !m_givenUp.isEmpty(); }

signals:
    void changed();
    void notify(const Notice &notice);

private:
    struct Watched
    {
        Link *link;
        Delivery delivery;
        Sender send;
    };
    using Key = std::tuple<int, quint64, QString>; // number of the link, peer, its address where it has no id
    struct Source
    {
        Key key;
        Peer peer;
    };
    struct Chunk
    {
        quint64 source;
        QByteArray bytes;
        qint64 timeUs;
        bool isMessage; // complete
        int done = 0;   // bytes of it
    };

    void receive(int link, const QByteArray &bytes, qint64 timeUs, const Peer &from);
    quint64 sourceOf(int link, const Peer &peer);
    void skipLongestBacklog();
    bool mayMatchNow();
    void matchSlice();
    void matchPiece();
    void handleHits(const AnswerMatcher::Hits &hits, const Chunk &chunk);
    void reportGivenUp();
    void endBursts();
    void sendDue();
    void send(const AnswerPacer::Answer &answer, qint64 nowUs);
    void scheduleSending();
    void reportDropped(int answers, const QString &reason);
    int forgetSources(int link, const std::function<bool(const Source &)> &isForgotten);
    int forgetAll();
    void compile();

    std::vector<Watched> m_links;
    std::map<Key, quint64> m_ids;
    QHash<quint64, Source> m_sources;
    quint64 m_lastId = 0;
    AnswerRules m_rules;
    int m_codec = -1;
    AnswerMatcher m_matcher;
    AnswerPacer m_pacer;
    EchoGuard m_guard;
    std::deque<Chunk> m_queue;
    qint64 m_queuedBytes = 0;
    QHash<quint64, qint64> m_waiting; // sources whose burst has not ended; the last arrival
    QElapsedTimer m_frame;            // a stretch of some milliseconds
    qint64 m_spentUs = 0;             // of it, on matching
    QTimer m_slice;
    QTimer m_quiet;
    QTimer m_due;
    Counts m_counts;
    QHash<QString, qint64> m_hits; // by the rule's id
    QSet<QString> m_givenUp;
    bool m_isOn = false;
    bool m_isPaused = false;
    QSet<QString> m_told; // notices of this time that it is on
};
