#pragma once

// Colors the text of a receive display by the shared rules.

#include "textmarks.h"

#include <QCache>
#include <QObject>

class LineStore;
class LogWindow;
class QTextEdit;
class SharedRules;

class RuleMarks : public QObject
{
    Q_OBJECT

public:
    // The parts of the display, whose lines are those of the store.
    RuleMarks(TextMarks *marks, const LogWindow &window, const LineStore &lines, QTextEdit *display);

signals:
    // The rule with this pattern took too many steps and is off for this run.
    void gaveUp(const QString &pattern);

private:
    void reload();
    TextMarks::Marks marksOf(const QTextBlock &block);
    TextMarks::Marks marksOfLine(const QTextBlock &block);
    TextMarks::Marks marksOfPiece(const QTextBlock &block);
    int lineRuleOf(const QTextBlock &block);
    QString headOf(const QTextBlock &block) const;

    TextMarks *m_marks;
    const LogWindow &m_window;
    const LineStore &m_lines;
    QTextEdit *m_display;
    SharedRules &m_rules;
    QCache<QString, TextMarks::Marks> m_known; // of lines in one block; cost in characters
    // The blocks of the line in several blocks that was drawn last, by their numbers, and
    // its rule: a walk to the beginning of a long line costs milliseconds.
    struct Blocks
    {
        int first = -1;
        int last = -1;
        int lineRule = -1;
    };
    Blocks m_drawn;
};
