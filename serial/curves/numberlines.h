#pragma once

// The lines of a log as values of curves. Owns the names of the curves, the form of
// the lines and the counts of those used and skipped. Knows no store of lines and
// no chart.
//
// Automatic: each line is judged by its shape, which is its names or its columns.
// A shape makes curves when a second line has it, so that a line in passing makes
// none; then the values of the first line are handed out, too. In another form,
// which the user chose, the first line counts.

#include "linematcher.h"
#include "linevalues.h"

#include <QHash>
#include <QStringList>

class NumberLines
{
public:
    static constexpr int maxCurves = 32;
    static constexpr int maxCharacters = 4096; // of a line that are looked at

    enum class Form { Automatic, Pairs, Words, Columns, Expression };

    struct Value
    {
        int curve;
        double value;
        qint64 line;
        qint64 ms; // the line's arrival
    };

    // Begins again. The expression has a group for each curve, with a name or
    // without; without groups, what it matches is the value.
    void start(Form form, const QString &expression = {});
    // The same with form and expression as they are.
    void restart();
    Form form() const { return m_form; }
    // Why the expression can't be used, for the user. Empty where it can.
    QString fault() const;
    // The expression took too many steps on many lines: no more are read.
    bool hasGivenUp() const { return m_hardLines >= kMaxHardLines; }

    // The values of a complete line, and perhaps of an earlier one of its shape.
    const QVector<Value> &read(const QString &text, qint64 line, qint64 ms);

    const QStringList &names() const { return m_names; } // by curve
    // Lines with text; those that the display writes before a packet don't count.
    qint64 used() const { return m_used; }
    qint64 skipped() const { return m_skipped; }
    // Values whose name would be that of one curve too many.
    qint64 surplus() const { return m_surplus; }

private:
    static constexpr int kMaxHardLines = 20;
    static constexpr int kUnknown = -1;
    static constexpr int kNone = -2; // one curve too many

    // Lines with the same names, or the same columns.
    struct Shape
    {
        QVector<int> curves; // by item, of a table by column
        QStringList heading; // of a table, where it has one
        QString firstText;   // until a second line comes
        qint64 firstLine = 0;
        qint64 firstMs = 0;
    };

    bool readForm(const QString &text, qint64 line, qint64 ms);
    bool readExpression(const QString &text, qint64 line, qint64 ms);
    Shape *addShape(quint64 key);
    void readFirst(Shape *shape);
    bool addValues(Shape *shape, qint64 line, qint64 ms);
    QString nameOf(const Shape &shape, const LineValues::Item &item) const;
    int curveOf(const QString &name);

    Form m_form = Form::Automatic;
    LineMatcher m_matcher;
    QVector<int> m_groups; // of the expression, by curve
    int m_hardLines = 0;
    LineValues m_line;
    QHash<quint64, Shape> m_shapes;
    QString m_before; // the text of the line before
    QStringList m_names;
    QVector<Value> m_values;
    qint64 m_used = 0;
    qint64 m_skipped = 0;
    qint64 m_surplus = 0;
};
