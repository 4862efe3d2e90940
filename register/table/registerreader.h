#pragma once

// Reads the rows of a register table from a file's content, a slice of its lines at a
// time. What is counted is for the report to the user.

#include "registerrow.h"

#include <QVector>

class RegisterReader
{
public:
    virtual ~RegisterReader() = default;

    // Reads up to that many more lines. False at the end.
    virtual bool read(int lines) = 0;

    const QVector<RegisterRow> &rows() const { return m_rows; }
    int skipped() const { return m_skipped; }           // lines that are no row
    int firstSkipped() const { return m_firstSkipped; } // its number, counted from 1
    int beyondLimit() const { return m_beyondLimit; }   // rows for which there was no room

protected:
    explicit RegisterReader(int maxRows)
        : m_maxRows(maxRows)
    {
    }
    bool hasRoom() const { return m_rows.size() < m_maxRows; }
    void add(const RegisterRow &row)
    {
        if (hasRoom())
            m_rows.append(row);
        else
            ++m_beyondLimit;
    }
    void skip(int line)
    {
        if (m_skipped++ == 0)
            m_firstSkipped = line;
    }

private:
    QVector<RegisterRow> m_rows;
    int m_maxRows;
    int m_skipped = 0;
    int m_firstSkipped = 0;
    int m_beyondLimit = 0;
};
