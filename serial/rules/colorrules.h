#pragma once

// The user's rules for coloring log lines, in their order, and their file.
//
// File: JSON in UTF-8, an object with "format" ("korvex-color-rules"), "version"
// (1) and "rules", an array of objects: "pattern" (text), "color" ("#rrggbb"), and
// the booleans "case", "word", "expression", "line" (false where missing) and "on"
// (true where missing).

#include "linematcher.h"

#include <QByteArray>
#include <QVector>

#include <optional>

struct ColorRule
{
    LineMatcher::Pattern pattern;
    quint32 color = 0xFF4D4D; // 0xRRGGBB
    bool isForLine = true;    // the complete line; the matches alone where not
    bool isOn = true;

    bool operator==(const ColorRule &other) const;
};

using ColorRules = QVector<ColorRule>;

namespace ColorRuleFile {

constexpr int maxRules = 200;
constexpr int maxPattern = 1000;          // characters
constexpr int maxBytes = 2 * 1024 * 1024; // of a file

QByteArray write(const ColorRules &rules);
// Empty where any of it is invalid; `reason` then holds why, in Chinese.
std::optional<ColorRules> read(const QByteArray &file, QString *reason);

} // namespace ColorRuleFile

// Rules for how common logs of embedded systems mark fatal errors, errors,
// warnings, information and debug messages.
ColorRules commonColorRules();
