#pragma once

// Finds what rules look for in the bytes of several sources, as they arrive: a match may
// lie across any number of chunks, up to a limit. Of each source it keeps a window.
//
// An expression whose match could become longer with further bytes waits for them, or
// for endBurst().

#include "answerpattern.h"
#include "answertemplate.h"
#include "textcodec.h"

#include <QHash>

class AnswerMatcher
{
public:
    static constexpr int maxMatch = 4096;     // bytes; of an expression, UTF-16 units
    static constexpr int maxPiece = 1024;     // bytes of one add()
    static constexpr int maxHardTexts = 3;    // pieces on which an expression may fail,
    static constexpr int forgivenAfter = 100; // unless so many follow on which it does not

    struct Hit
    {
        int rule = 0;
        // Bytes of the source since the rules were set; where an expression has matched
        // and the bytes are no text of the codec, about.
        qint64 begin = 0;
        qint64 end = 0;
        QByteArray answer; // may be empty
    };
    using Hits = QVector<Hit>; // in the order of their ends, then of their rules

    // Forgets what was received. Faulty rules, and those that are off, find nothing.
    void setRules(const AnswerRules &rules, int codecIndex);
    // Why the rule can't be used, for the user. Empty where it can.
    static QString faultOf(const AnswerRule &rule, int codecIndex);
    bool isEmpty() const { return m_rules.isEmpty(); }
    int ruleCount() const { return m_rules.size(); } // of those that are used

    Hits add(quint64 source, const QByteArray &piece);
    // The source is quiet.
    Hits endBurst(quint64 source);
    // The message of the source is complete: what follows is one of its own.
    Hits endMessage(quint64 source);
    // Whether endBurst() may find something.
    bool isWaiting(quint64 source) const;
    void forget(quint64 source) { m_streams.remove(source); }
    void forgetAll() { m_streams.clear(); }

    // The last bytes of the source; the last one's number is `end` - 1.
    struct Recent
    {
        QByteArray bytes;
        qint64 end = 0;
    };
    Recent recent(quint64 source) const;

    // Rules, by their index, whose expressions took too many steps; they find nothing
    // any more.
    QVector<int> popGivenUp();

private:
    struct Rule
    {
        int index; // among all rules
        AnswerPattern pattern;
        AnswerTemplate answer;
        int hardTexts = 0;
        int easyTexts = 0; // since the last hard one
    };
    struct Stream
    {
        QByteArray bytes;
        qint64 begin = 0; // the number of the first byte kept
        QString text;     // as expressions see it
        qint64 textBegin = 0;
        QVector<qint64> next; // where each rule goes on; in bytes or in units of the text
        StreamDecoder decoder;
        bool isWaiting = false;
    };

    enum class Step { GoesOn, Waits, IsDone, Fails };

    Stream &streamOf(quint64 source);
    void findBytes(Stream *stream, int rule, Hits *hits) const;
    void findText(Stream *stream, int rule, bool isEnd, Hits *hits);
    Step findNext(Stream *stream, int rule, bool isEnd, Hits *hits);
    void addTextHit(const Stream &stream, const Rule &rule, const QRegularExpressionMatch &match,
                    Hits *hits) const;
    void countHardTexts(Rule *rule, bool isHard);
    static void sort(Hits *hits);
    void trim(Stream *stream) const;

    QVector<Rule> m_rules;
    bool m_hasExpressions = false;
    int m_codec = 0;
    QHash<quint64, Stream> m_streams;
    QVector<int> m_givenUp;
};
