#pragma once

// The user's rules for answering received bytes, in their order, and their file.
//
// File: JSON in UTF-8, an object with "format" ("korvex-answer-rules"), "version" (1)
// and "rules", an array of objects: "id" (text, by which copies of the program know a
// rule again), "name", "on" (true where missing), "kind" ("text", "hex" or
// "expression"), "pattern", "answer", "hexAnswer" (false where missing), "lineEnd"
// ("none", "cr", "lf" or "crlf"), "checksum" (a name of FrameChecksum, or empty) and
// "delay" (milliseconds).

#include <QByteArray>
#include <QString>
#include <QVector>

#include <optional>

struct AnswerRule
{
    enum Kind { Text, Hex, Expression };
    enum LineEnd { NoLineEnd, Cr, Lf, CrLf };

    QString id;
    QString name;
    bool isOn = true;
    Kind kind = Text;
    QString pattern;
    QString answer; // empty, without a line end: matches are only counted
    bool isHexAnswer = false;
    LineEnd lineEnd = NoLineEnd;
    QString checksum; // of the answer, before its line end
    int delayMs = 0;

    bool operator==(const AnswerRule &other) const;
    bool operator!=(const AnswerRule &other) const { return !(*this == other); }
};

using AnswerRules = QVector<AnswerRule>;

namespace AnswerRuleFile {

constexpr int maxRules = 200;
constexpr int maxName = 100;     // characters
constexpr int maxPattern = 1000; // characters
constexpr int maxAnswer = 4000;  // characters
constexpr int maxDelayMs = 60 * 1000;
constexpr int maxBytes = 8 * 1024 * 1024; // of a file

QByteArray write(const AnswerRules &rules);
// Empty where any of it is invalid; `reason` then holds why, in Chinese. A rule
// without an id gets one that follows from its content.
std::optional<AnswerRules> read(const QByteArray &file, QString *reason);

// The rules of two writers: `theirs` with what changed from `base` to `mine`. Where
// both changed a rule, `mine` wins; a rule that one removed and the other changed stays.
// Up to maxRules of them.
AnswerRules merged(const AnswerRules &base, const AnswerRules &mine, const AnswerRules &theirs);

} // namespace AnswerRuleFile
