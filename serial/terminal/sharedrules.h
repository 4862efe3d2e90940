#pragma once

// The rules that color all receive displays, as the settings hold them, and what is
// computed of them once for all. A rule that gives up is off for this run.

#include "rulecoloring.h"

#include <QObject>

class SharedRules : public QObject
{
    Q_OBJECT

public:
    static SharedRules &instance();

    // From the settings, where they are others than before.
    void load();
    // Into the settings. False where the file cannot be written; they are then good
    // for this run only.
    bool store(const ColorRules &rules, bool areUsed);

    const ColorRules &rules() const { return m_rules; }
    bool areUsed() const { return m_areUsed; }
    // Of the rules that are in use.
    RuleColoring &coloring() { return m_coloring; }

signals:
    void changed(); // also when a rule has given up

private:
    SharedRules() = default;

    ColorRules m_rules;
    QString m_stored; // what m_rules were read from
    bool m_areUsed = false;
    RuleColoring m_coloring;
};
