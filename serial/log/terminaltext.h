#pragma once

// Decoded text as a terminal shows it: colors and faces by escape sequences
// (SGR), other sequences without an effect left out, a line overwritten behind a
// carriage return; or its control characters by their names. Keeps what is known of
// one stream from chunk to chunk.
//
// Sequences by ECMA-48; indexed and RGB colors as xterm has them (38;5 and 38;2).

#include "linestyles.h"

#include <QString>
#include <QVector>

class TerminalText
{
public:
    struct Options
    {
        bool sequences = false; // are interpreted
        bool symbols = false;   // "<CR>" and the like for control characters that remain

        bool isOn() const { return sequences || symbols; }
        bool operator==(const Options &other) const
        {
            return sequences == other.sequences && symbols == other.symbols;
        }
    };

    // What a chunk does to the text before it.
    struct Output
    {
        QString removed;         // the end of the line that was open
        QString text;            // in its place; every line end is "\n"
        QVector<StyledRun> runs; // of the text, by position
    };

    Output feed(const QString &text, Options options);
    // Other text followed on the line: it is overwritten no more.
    void breakLine();
    void reset();

private:
    enum class State { Text, Escape, Sequence, String, StringEscape };
    struct Cell
    {
        uint character;
        TextStyle style;
    };

    int feedPlainLine(const QString &text, int from);
    void feedCharacter(uint character, Options options);
    void feedText(uint character, Options options);
    void feedEscape(uint character, Options options);
    void feedSequence(uint character, Options options);
    void feedString(uint character, Options options);
    void control(uint character, Options options);
    void put(uint character);
    void putName(uint character);
    void giveUp(Options options);
    void endLine();
    void show();
    void runSequence(uint final);
    void setStyle(const QVector<int> &numbers);
    static int color(const QVector<int> &numbers, int *at);
    QVector<int> numbers() const;
    void touch(int cell) { m_same = qMin(m_same, cell); }

    State m_state = State::Text;
    QString m_pending; // of a sequence, without its escape character
    TextStyle m_style;

    // The end of the open line, which may be overwritten, and how many of its
    // cells are as the output shows them.
    QVector<Cell> m_line;
    int m_column = 0;
    int m_same = 0;
    QString m_shownText;        // of the cells, in the output
    bool m_isCut = false;       // the line began before these cells
    bool m_afterReturn = false; // which ends the line, or is shown as a symbol
    Output m_output;
};
