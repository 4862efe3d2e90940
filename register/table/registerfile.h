#pragma once

// A register table on disk: saves a table, and reads a file into one, a slice at
// a time so that a large file does not stop the window. Shows nothing.

#include "registerreader.h"

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

    // Saves as C source, see RegisterList. The table remains unsaved where the file does
    // not have the text of all its cells. Without any pair nothing is written.
    bool saveAsC(const QString &fileName, int addressLength, int valueLength, QString *reason) const;
    // By the suffix of its name.
    static bool isC(const QString &fileName);

    // Begins to read a table or a list; which of them, the content decides unless it is
    // known to be a list. On failure, reason says why, for the user.
    bool open(const QString &fileName, bool isList, QString *reason);
    // Reads the next slice. False at the end; then the rows are in the table.
    bool readSlice();

    const RegisterReader &reader() const { return *m_reader; }
    int rowsRead() const { return m_reader->rows().size(); }
    bool isList() const { return m_isList; }
    bool isHexadecimalList() const { return m_isHexadecimal; } // also numbers without a prefix

private:
    RegisterTableModel *m_table;
    std::unique_ptr<RegisterReader> m_reader; // of the file opened last
    bool m_isList = false;
    bool m_isHexadecimal = false;
};
