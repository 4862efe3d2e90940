// Automatic answers on log lines: processor time for each megabyte with so many rules
// of a kind, and the longest time for one piece.
//   answersbench [MEGABYTES [RULES]]

#include "answermatcher.h"
#include "loglines.h"

#include <QElapsedTimer>
#include <cstdio>
#include <ctime>

namespace {

struct Kind
{
    const char *name;
    AnswerRule::Kind kind;
    QString pattern; // "%1": the number of the rule
};

AnswerRules rulesOf(const Kind &kind, int count)
{
    AnswerRules rules;
    for (int i = 0; i < count; ++i) {
        AnswerRule rule;
        rule.kind = kind.kind;
        rule.pattern = kind.pattern.arg(i, 2, 10, QLatin1Char('0'));
        rule.answer = QStringLiteral("$0");
        rules.append(rule);
    }
    return rules;
}

void match(const Kind &kind, int count, int codec, const QByteArray &log)
{
    AnswerMatcher matcher;
    matcher.setRules(rulesOf(kind, count), codec);
    qint64 hits = 0;
    double worst = 0;
    const std::clock_t begin = std::clock();
    for (int at = 0; at < log.size(); at += AnswerMatcher::maxPiece) {
        QElapsedTimer piece;
        piece.start();
        hits += matcher.add(1, log.mid(at, AnswerMatcher::maxPiece)).size();
        worst = qMax(worst, double(piece.nsecsElapsed()) / 1e6);
    }
    const double spentMs = double(std::clock() - begin) * 1000 / CLOCKS_PER_SEC;
    std::printf("%2d rules, %-28s %-8s %7.1f ms for a megabyte, %8lld hits, longest piece %.1f ms%s\n", count,
                kind.name, TextCodec::name(codec).constData(), spentMs * 1e6 / log.size(),
                static_cast<long long>(hits), worst, matcher.popGivenUp().isEmpty() ? "" : ", given up");
}

} // namespace

int main(int argc, char *argv[])
{
    const int bytes = (argc > 1 ? atoi(argv[1]) : 10) * 1000 * 1000;
    const int count = argc > 2 ? atoi(argv[2]) : 20;
    QByteArray log;
    for (quint32 number = 0; log.size() < bytes; ++number)
        log += Boardsim::logLine(number, 1'700'000'000'000 + number * 2, 1).toUtf8() + '\n';
    const Kind kinds[] = {
        {"text without a hit", AnswerRule::Text, QStringLiteral("AT+CMD%1\\r\\n")},
        {"bytes without a hit", AnswerRule::Hex, QStringLiteral("AA 55 %1 \?\? \?\? 0D")},
        {"expressions without a hit", AnswerRule::Expression, QStringLiteral("cmd%1=(\\d+)")},
        {"expressions over a line", AnswerRule::Expression, QStringLiteral("^.*cmd%1=(\\d+).*$")},
        {"expressions with hits", AnswerRule::Expression, QStringLiteral("\\d%1\\b")},
        {"endless expressions", AnswerRule::Expression, QStringLiteral("(%1|\\w)[\\s\\S]*nothing")},
        {"hard expressions", AnswerRule::Expression, QStringLiteral("([a-z]+)*%1=")},
    };
    for (const Kind &kind : kinds)
        for (const int codec : {TextCodec::Utf8, TextCodec::Gb18030})
            match(kind, count, codec, log);
    return 0;
}
