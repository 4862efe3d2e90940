#include "answermatcher.h"

#include <algorithm>
#include <ctime>
#include <utility>

namespace {

constexpr int kContext = 256; // units before a match, for what looks behind
constexpr std::clock_t kMaxProcessorTime = CLOCKS_PER_SEC / 100;

// Not between the two halves of a character.
int atCharacter(const QString &text, int at)
{
    return at > 0 && at < text.size() && text.at(at).isLowSurrogate() ? at - 1 : at;
}

} // namespace

QString AnswerMatcher::faultOf(const AnswerRule &rule, int codecIndex)
{
    const AnswerPattern pattern(rule.kind, rule.pattern, codecIndex);
    if (!pattern.fault().isEmpty())
        return pattern.fault();
    return AnswerTemplate(rule, codecIndex, pattern.groupCount()).fault();
}

void AnswerMatcher::setRules(const AnswerRules &rules, int codecIndex)
{
    m_rules.clear();
    m_streams.clear();
    m_givenUp.clear();
    m_codec = codecIndex;
    m_hasExpressions = false;
    for (int i = 0; i < rules.size(); ++i) {
        const AnswerRule &rule = rules.at(i);
        if (!rule.isOn || !faultOf(rule, codecIndex).isEmpty())
            continue;
        const AnswerPattern pattern(rule.kind, rule.pattern, codecIndex);
        m_rules.append({i, pattern, AnswerTemplate(rule, codecIndex, pattern.groupCount())});
        m_hasExpressions = m_hasExpressions || pattern.isExpression();
    }
}

AnswerMatcher::Stream &AnswerMatcher::streamOf(quint64 source)
{
    Stream &stream = m_streams[source];
    if (stream.next.isEmpty())
        stream.next.fill(0, m_rules.size());
    return stream;
}

AnswerMatcher::Hits AnswerMatcher::add(quint64 source, const QByteArray &piece)
{
    Hits hits;
    if (m_rules.isEmpty())
        return hits;
    Stream &stream = streamOf(source);
    stream.bytes += piece;
    if (m_hasExpressions)
        stream.text += stream.decoder.decode(piece.constData(), piece.size(), m_codec);
    stream.isWaiting = false;
    for (int i = 0; i < m_rules.size(); ++i) {
        if (m_rules.at(i).pattern.isExpression())
            findText(&stream, i, false, &hits);
        else
            findBytes(&stream, i, &hits);
    }
    trim(&stream);
    sort(&hits);
    return hits;
}

AnswerMatcher::Hits AnswerMatcher::endBurst(quint64 source)
{
    Hits hits;
    if (!isWaiting(source))
        return hits;
    Stream &stream = streamOf(source);
    stream.isWaiting = false;
    for (int i = 0; i < m_rules.size(); ++i)
        if (m_rules.at(i).pattern.isExpression())
            findText(&stream, i, true, &hits);
    trim(&stream);
    sort(&hits);
    return hits;
}

AnswerMatcher::Hits AnswerMatcher::endMessage(quint64 source)
{
    const Hits hits = endBurst(source);
    if (!m_streams.contains(source))
        return hits;
    Stream &stream = m_streams[source];
    stream.begin += stream.bytes.size(); // goes on counting
    stream.bytes.clear();
    stream.text.clear();
    stream.textBegin = 0;
    stream.decoder.reset();
    for (int i = 0; i < m_rules.size(); ++i)
        stream.next[i] = m_rules.at(i).pattern.isExpression() ? 0 : stream.begin;
    return hits;
}

void AnswerMatcher::findBytes(Stream *stream, int rule, Hits *hits) const
{
    const AnswerPattern &pattern = m_rules.at(rule).pattern;
    qint64 &next = stream->next[rule];
    const qint64 end = stream->begin + stream->bytes.size();
    for (;;) {
        const int at = pattern.indexIn(stream->bytes, static_cast<int>(next - stream->begin));
        if (at < 0)
            break;
        const qint64 begin = stream->begin + at;
        next = begin + pattern.size();
        hits->append({m_rules.at(rule).index, begin, next,
                      m_rules.at(rule).answer.bytes(pattern.groups(stream->bytes, at))});
    }
    next = qMax(next, end - pattern.size() + 1);
}

void AnswerMatcher::findText(Stream *stream, int rule, bool isEnd, Hits *hits)
{
    Rule &own = m_rules[rule];
    const std::clock_t deadline = std::clock() + kMaxProcessorTime;
    Step step = own.hardTexts < maxHardTexts ? Step::GoesOn : Step::Fails;
    while (step == Step::GoesOn)
        step = findNext(stream, rule, isEnd, hits);
    if (step == Step::Fails)
        stream->next[rule] = stream->textBegin + stream->text.size();
    countHardTexts(&own, step == Step::Fails || std::clock() > deadline);
}

// An expression that was interrupted now and then, for days, goes on.
void AnswerMatcher::countHardTexts(Rule *rule, bool isHard)
{
    if (rule->hardTexts >= maxHardTexts)
        return;
    if (!isHard) {
        if (++rule->easyTexts >= forgivenAfter)
            rule->hardTexts = 0;
        return;
    }
    rule->easyTexts = 0;
    if (++rule->hardTexts == maxHardTexts)
        m_givenUp.append(rule->index);
}

AnswerMatcher::Step AnswerMatcher::findNext(Stream *stream, int rule, bool isEnd, Hits *hits)
{
    const QRegularExpression &expression = m_rules.at(rule).pattern.expression();
    qint64 &next = stream->next[rule];
    const auto match = [&](QRegularExpression::MatchType type) {
        return expression.match(stream->text, static_cast<int>(next - stream->textBegin), type,
                                QRegularExpression::DontCheckSubjectStringMatchOption);
    };
    const qint64 end = stream->textBegin + stream->text.size();
    QRegularExpressionMatch found =
        match(isEnd ? QRegularExpression::NormalMatch : QRegularExpression::PartialPreferFirstMatch);
    const bool isUndecided = found.hasPartialMatch();
    if (isUndecided) {
        next = stream->textBegin + found.capturedStart();
        if (end - next <= maxMatch) {
            stream->isWaiting = true;
            return Step::Waits;
        }
        found = match(QRegularExpression::NormalMatch);
    }
    if (!found.isValid())
        return Step::Fails;
    if (found.hasMatch()) {
        addTextHit(*stream, m_rules.at(rule), found, hits);
        next = stream->textBegin + found.capturedEnd();
        return Step::GoesOn;
    }
    if (isUndecided) // too long to wait for its end
        next = stream->textBegin + atCharacter(stream->text, stream->text.size() - maxMatch / 2);
    else if (!isEnd) // otherwise further bytes may still complete it
        next = end;
    return isUndecided ? Step::GoesOn : Step::IsDone;
}

void AnswerMatcher::addTextHit(const Stream &stream, const Rule &rule, const QRegularExpressionMatch &match,
                               Hits *hits) const
{
    const auto encoded = [this](const QString &text) { return TextCodec::encode(text, m_codec); };
    QVector<QByteArray> groups;
    for (int i = 0; i <= match.lastCapturedIndex(); ++i)
        groups.append(encoded(match.captured(i)));
    const qint64 last = stream.begin + stream.bytes.size();
    const qint64 end = qMax(stream.begin, last - encoded(stream.text.mid(match.capturedEnd())).size());
    const qint64 begin = qMax(stream.begin, end - groups.first().size());
    hits->append({rule.index, begin, end, rule.answer.bytes(groups)});
}

void AnswerMatcher::sort(Hits *hits)
{
    std::stable_sort(hits->begin(), hits->end(), [](const Hit &first, const Hit &second) {
        return first.end != second.end ? first.end < second.end : first.rule < second.rule;
    });
}

void AnswerMatcher::trim(Stream *stream) const
{
    const int surplus = stream->bytes.size() - maxMatch;
    if (surplus > 0) {
        stream->bytes.remove(0, surplus);
        stream->begin += surplus;
    }
    qint64 needed = stream->textBegin + stream->text.size();
    for (int i = 0; i < m_rules.size(); ++i)
        if (m_rules.at(i).pattern.isExpression())
            needed = qMin(needed, stream->next.at(i));
    const int before = atCharacter(stream->text, static_cast<int>(needed - stream->textBegin) - kContext);
    if (before > 0) {
        stream->text.remove(0, before);
        stream->textBegin += before;
    }
}

bool AnswerMatcher::isWaiting(quint64 source) const
{
    const auto stream = m_streams.constFind(source);
    return stream != m_streams.constEnd() && stream->isWaiting;
}

AnswerMatcher::Recent AnswerMatcher::recent(quint64 source) const
{
    const auto stream = m_streams.constFind(source);
    if (stream == m_streams.constEnd())
        return {};
    return {stream->bytes, stream->begin + stream->bytes.size()};
}

QVector<int> AnswerMatcher::popGivenUp()
{
    return std::exchange(m_givenUp, {});
}
