#pragma once

// A register table on disk: saves a table, and reads a file into one, a slice at
// a time so that a large file does not stop the window. Shows nothing.

#include "registercsv.h"

#include <memory>

class RegisterTableModel;

class RegisterFile
{
public:
    // The table outlives the file.
    explicit RegisterFile(RegisterTableModel *table)
        : m_table(table)
    {
    }

    // On failure, reason says why, for the user.
    bool save(const QString &fileName, QString *reason) const;

    // Begins to read. On failure, reason says why, for the user.
    bool open(const QString &fileName, QString *reason);
    // Reads the next slice. False at the end; then the rows are in the table.
    bool readSlice();

    int rowsRead() const { return m_reader->rows().size(); }
    int skippedLines() const { return m_reader->skipped(); }
    int beyondLimit() const { return m_reader->beyondLimit(); } // rows for which there was no room

private:
    RegisterTableModel *m_table;
    std::unique_ptr<RegisterCsv::Reader> m_reader; // of the file opened last
};
