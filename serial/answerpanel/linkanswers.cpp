#include "linkanswers.h"

#include "settings.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int kSliceMs = 4;
constexpr int kFrameMs = 16;
constexpr int kMaxSources = 4096; // of datagrams
constexpr int kShownName = 30;    // characters

QString nameOf(const AnswerRule &rule)
{
    return (rule.name.isEmpty() ? rule.pattern : rule.name).left(kShownName);
}

} // namespace

LinkAnswers::LinkAnswers(QObject *parent)
    : QObject(parent)
    , m_slice(this)
    , m_quiet(this)
    , m_due(this)
{
    for (QTimer *timer : {&m_slice, &m_quiet, &m_due})
        timer->setSingleShot(true);
    m_due.setTimerType(Qt::PreciseTimer);
    m_quiet.setInterval(quietMs);
    connect(&m_slice, &QTimer::timeout, this, &LinkAnswers::matchSlice);
    connect(&m_quiet, &QTimer::timeout, this, &LinkAnswers::endBursts);
    connect(&m_due, &QTimer::timeout, this, &LinkAnswers::sendDue);
}

void LinkAnswers::watch(Link *link, Delivery delivery, const Sender &sender)
{
    const int number = static_cast<int>(m_links.size());
    m_links.push_back({link, delivery, sender});
    connect(link, &Link::received, this,
            [this, number](const QByteArray &bytes, qint64 arrivalUs, const Peer &from) {
                if (m_isOn && !m_isPaused)
                    receive(number, bytes, arrivalUs, from);
            });
    connect(link, &Link::peerLeft, this, [this, link, number](const Peer &peer) {
        if (peer.id == 0)
            return; // the link ends with it
        const int dropped =
            forgetSources(number, [&](const Source &source) { return source.peer.id == peer.id; });
        reportDropped(dropped, QStringLiteral("[%1]已断开").arg(link->peerName(peer)));
    });
    connect(link, &Link::stateChanged, this, [this, link, number] {
        if (!link->isOpen())
            reportDropped(forgetSources(number, [](const Source &) { return true; }),
                          QStringLiteral("连接已断开"));
    });
}

// ---- rules and state

void LinkAnswers::setRules(const AnswerRules &rules)
{
    if (rules == m_rules)
        return;
    m_rules = rules;
    compile();
}

void LinkAnswers::compile()
{
    m_codec = Settings::instance().textCodec;
    m_givenUp.clear();
    m_waiting.clear();
    m_matcher.setRules(m_rules, m_codec);
    emit changed();
}

void LinkAnswers::setOn(bool isOn)
{
    if (isOn == m_isOn)
        return;
    m_isOn = isOn;
    m_told.clear();
    if (isOn)
        compile();
    else
        reportDropped(forgetAll(), QStringLiteral("自动应答已关闭"));
    emit changed();
}

void LinkAnswers::setPaused(bool isPaused)
{
    m_isPaused = isPaused;
    if (isPaused)
        reportDropped(forgetAll(), QStringLiteral("自动应答已暂停"));
    emit changed();
}

void LinkAnswers::clearCounts()
{
    m_counts = Counts();
    m_hits.clear();
    emit changed();
}

// ---- matching

quint64 LinkAnswers::sourceOf(int link, const Peer &peer)
{
    const bool isByAddress = m_links[size_t(link)].delivery == Delivery::Datagrams;
    const Key key(link, peer.id, isByAddress ? peer.text() : QString());
    const auto known = m_ids.find(key);
    if (known != m_ids.end())
        return known->second;
    if (isByAddress && m_sources.size() >= kMaxSources && m_queue.empty())
        forgetSources(link, [this](const Source &source) { return !m_pacer.has(m_ids.at(source.key)); });
    m_ids[key] = ++m_lastId;
    m_sources.insert(m_lastId, {key, peer});
    return m_lastId;
}

void LinkAnswers::receive(int link, const QByteArray &bytes, qint64 timeUs, const Peer &from)
{
    if (m_codec != Settings::instance().textCodec)
        compile();
    if (m_matcher.isEmpty())
        return;
    if (m_queuedBytes + bytes.size() > maxQueuedBytes)
        skipLongestBacklog();
    const bool isMessage = m_links[size_t(link)].delivery == Delivery::Datagrams;
    m_queue.push_back({sourceOf(link, from), bytes, timeUs, isMessage});
    m_queuedBytes += bytes.size();
    if (m_slice.isActive())
        return;
    if (mayMatchNow())
        matchSlice();
    else
        m_slice.start(0);
}

// Of the source that sends faster than it can be followed; the others lose nothing.
void LinkAnswers::skipLongestBacklog()
{
    QHash<quint64, qint64> backlogs;
    quint64 longest = 0;
    for (const Chunk &chunk : m_queue) {
        backlogs[chunk.source] += chunk.bytes.size() - chunk.done;
        if (backlogs.value(chunk.source) > backlogs.value(longest))
            longest = chunk.source;
    }
    m_queue.erase(std::remove_if(m_queue.begin(), m_queue.end(),
                                 [longest](const Chunk &chunk) { return chunk.source == longest; }),
                  m_queue.end());
    m_queuedBytes -= backlogs.value(longest);
    m_matcher.forget(longest);
    if (!m_told.contains(QStringLiteral("overload")))
        emit notify(Notice::error(QStringLiteral("接收过快，部分数据未参与自动应答！")));
    m_told.insert(QStringLiteral("overload"));
}

// Many chunks may arrive in one turn of the event loop.
bool LinkAnswers::mayMatchNow()
{
    if (!m_frame.isValid() || m_frame.elapsed() > kFrameMs) {
        m_frame.start();
        m_spentUs = 0;
    }
    return m_spentUs < kSliceMs * 1000;
}

void LinkAnswers::matchSlice()
{
    QElapsedTimer clock;
    clock.start();
    while (!m_queue.empty() && clock.elapsed() < kSliceMs)
        matchPiece();
    m_spentUs += clock.nsecsElapsed() / 1000;
    if (!m_queue.empty())
        m_slice.start(0);
    if (!m_waiting.isEmpty() && !m_quiet.isActive())
        m_quiet.start();
    reportGivenUp();
    scheduleSending();
}

void LinkAnswers::matchPiece()
{
    Chunk &chunk = m_queue.front();
    const QByteArray piece = chunk.bytes.mid(chunk.done, AnswerMatcher::maxPiece);
    chunk.done += piece.size();
    m_queuedBytes -= piece.size();
    handleHits(m_matcher.add(chunk.source, piece), chunk);
    if (chunk.done < chunk.bytes.size())
        return;
    if (chunk.isMessage) {
        handleHits(m_matcher.endMessage(chunk.source), chunk);
    } else if (m_matcher.isWaiting(chunk.source)) {
        m_waiting.insert(chunk.source, chunk.timeUs);
    } else {
        m_waiting.remove(chunk.source);
    }
    m_queue.pop_front();
}

void LinkAnswers::handleHits(const AnswerMatcher::Hits &hits, const Chunk &chunk)
{
    if (hits.isEmpty())
        return;
    const AnswerMatcher::Recent recent = m_matcher.recent(chunk.source);
    const qint64 first = recent.end - recent.bytes.size();
    for (const AnswerMatcher::Hit &hit : hits) {
        if (m_guard.isEcho(chunk.source, chunk.timeUs, {recent.bytes, first}, hit.begin, hit.end)) {
            ++m_counts.echoes;
            if (!m_told.contains(QStringLiteral("echo")))
                emit notify(Notice::error(QStringLiteral("收到刚发出的应答（回显），不再应答")));
            m_told.insert(QStringLiteral("echo"));
            continue;
        }
        const AnswerRule &rule = m_rules.at(hit.rule);
        ++m_counts.hits;
        ++m_hits[rule.id];
        if (!hit.answer.isEmpty() &&
            !m_pacer.add({chunk.source, hit.answer}, chunk.timeUs + rule.delayMs * 1000LL))
            ++m_counts.dropped;
    }
    emit changed();
}

void LinkAnswers::reportGivenUp()
{
    const QVector<int> rules = m_matcher.popGivenUp();
    for (const int rule : rules) {
        m_givenUp.insert(m_rules.at(rule).id);
        emit notify(Notice::error(
            QStringLiteral("自动应答规则[%1]过于复杂，已停用！").arg(nameOf(m_rules.at(rule)))));
    }
    if (!rules.isEmpty())
        emit changed();
}

void LinkAnswers::endBursts()
{
    const qint64 before = Link::nowUs() - quietMs * 1000LL;
    const QHash<quint64, qint64> waiting = m_waiting;
    for (auto source = waiting.begin(); source != waiting.end(); ++source) {
        if (source.value() > before || !m_queue.empty())
            continue;
        m_waiting.remove(source.key());
        handleHits(m_matcher.endBurst(source.key()), {source.key(), {}, source.value(), false});
    }
    if (!m_waiting.isEmpty())
        m_quiet.start();
    reportGivenUp();
    scheduleSending();
}

// ---- sending

void LinkAnswers::scheduleSending()
{
    const std::optional<qint64> next = m_pacer.nextUs();
    if (!next)
        return m_due.stop();
    const qint64 ms = (*next - Link::nowUs() + 999) / 1000;
    m_due.start(static_cast<int>(qBound<qint64>(0, ms, AnswerRuleFile::maxDelayMs)));
}

// Sending may bring further bytes, or end the link, from within.
void LinkAnswers::sendDue()
{
    const qint64 nowUs = Link::nowUs();
    while (const std::optional<AnswerPacer::Answer> answer = m_pacer.popDue(nowUs))
        send(*answer, nowUs);
    const int overLimit = m_pacer.popOverLimit();
    m_counts.dropped += overLimit;
    if (overLimit > 0 && !m_told.contains(QStringLiteral("limit")))
        emit notify(Notice::error(QStringLiteral("应答超过每秒上限，超出的未发送！")));
    if (overLimit > 0)
        m_told.insert(QStringLiteral("limit"));
    scheduleSending();
    emit changed();
}

void LinkAnswers::send(const AnswerPacer::Answer &answer, qint64 nowUs)
{
    const auto source = m_sources.constFind(answer.source);
    if (source == m_sources.constEnd())
        return;
    const Peer peer = source->peer;
    const Watched &watched = m_links[size_t(std::get<0>(source->key))];
    m_guard.sent(answer.source, answer.bytes, nowUs); // an echo may come from within
    if (watched.send(answer.bytes, peer)) {
        ++m_counts.sent;
        return;
    }
    ++m_counts.dropped;
    const QString refusal = watched.link->refusal();
    if (!m_told.contains(refusal))
        emit notify(Notice::error(refusal.isEmpty() ? QStringLiteral("应答未能发送！")
                                                    : QStringLiteral("应答未能发送：") + refusal));
    m_told.insert(refusal);
}

void LinkAnswers::reportDropped(int answers, const QString &reason)
{
    if (answers == 0)
        return;
    m_counts.dropped += answers;
    emit notify(Notice::error(QStringLiteral("%1，%2个应答未发送！").arg(reason).arg(answers)));
    emit changed();
}

int LinkAnswers::forgetSources(int link, const std::function<bool(const Source &)> &isForgotten)
{
    int dropped = 0;
    for (auto entry = m_ids.begin(); entry != m_ids.end();) {
        const quint64 id = entry->second;
        if (std::get<0>(entry->first) != link || !isForgotten(m_sources.value(id))) {
            ++entry;
            continue;
        }
        dropped += m_pacer.drop(id);
        m_matcher.forget(id);
        m_guard.forget(id);
        m_waiting.remove(id);
        m_sources.remove(id);
        entry = m_ids.erase(entry);
    }
    const auto isGone = [this](const Chunk &chunk) { return !m_sources.contains(chunk.source); };
    m_queue.erase(std::remove_if(m_queue.begin(), m_queue.end(), isGone), m_queue.end());
    m_queuedBytes = 0;
    for (const Chunk &chunk : m_queue)
        m_queuedBytes += chunk.bytes.size() - chunk.done;
    return dropped;
}

int LinkAnswers::forgetAll()
{
    m_queue.clear();
    m_queuedBytes = 0;
    m_waiting.clear();
    m_matcher.forgetAll();
    m_guard.forgetAll();
    return m_pacer.dropAll();
}
