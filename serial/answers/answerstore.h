#pragma once

// The rules of a page in their file, which other copies of the program may change
// meanwhile. A file that is no such file is kept under another name.

#include "answerrules.h"

class AnswerStore
{
public:
    explicit AnswerStore(const QString &fileName);

    const AnswerRules &rules() const { return m_rules; }

    // What the file holds by now; no rules where there is none. Otherwise a notice for
    // the user, and the rules stay.
    QString load();
    // Writes what has changed here over what the file holds by now; rules() are both.
    // The reason of a failure; the rules are then good for this run.
    QString save(const AnswerRules &rules);
    // Of the last load() or save(): what became of a file that could not be read.
    QString keptAside() const { return m_keptAside; }

private:
    bool readFile(AnswerRules *rules, QString *reason);
    bool keepAside(const QString &fault, QString *reason);

    QString m_fileName;
    AnswerRules m_rules;
    AnswerRules m_base; // as the file held them
    QString m_keptAside;
};
