#pragma once

// What became of each row of a register table that was read, written or compared, as
// the fields of a file. The texts are those of the moment when the row was sent: editing
// the table afterwards does not change them.

#include "registertablemodel.h"

#include <QDateTime>
#include <QVector>

class RegisterReport
{
public:
    enum Task { Read, Write, WriteAndReadBack, Compare };

    struct Line
    {
        int row = 0; // counted from 0
        QString address;
        QString value; // sent, or compared with the board's
        QString board; // the board's value
        RegisterTableModel::Outcome outcome = RegisterTableModel::NoOutcome;
        int tries = 0;
        QDateTime time; // of its end
        QString sender;
    };

    void begin(Task task, int device, const QDateTime &now);
    int add(int row, const QString &address, const QString &value); // the place of the line
    Line &line(int place) { return m_lines[place]; }
    // Why not all rows have a result; empty where they have.
    void end(const QString &why) { m_end = why; }

    bool isEmpty() const { return m_lines.isEmpty(); }
    QByteArray csv() const; // UTF-8 with a byte order mark

private:
    QString result(const Line &line) const;

    Task m_task = Read;
    int m_device = 0;
    QDateTime m_begin;
    QString m_end;
    QVector<Line> m_lines;
};
