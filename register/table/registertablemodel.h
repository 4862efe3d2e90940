#pragma once

// The rows of a register table: their cells, how the last request for each
// ended, and whether a file has them. Holds complete pages, empty rows included.
// Rows and pages are counted from 0. Knows no file, no board and no view.

#include "registerrow.h"

#include <QAbstractTableModel>

class RegisterTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    static constexpr int rowsPerPage = 100;
    static constexpr int maxPages = 100;
    static constexpr int maxRows = maxPages * rowsPerPage;

    enum Column { Number, Address, Value, Description, columns };
    // Answered: read, compared and equal, or written and read back. Differs: another
    // value was read back. Unequal: compared, the board has another value.
    enum Outcome { NoOutcome, Answered, Written, Refused, Unanswered, NotSent, Differs, Unequal };
    static constexpr int outcomeRole = Qt::UserRole;     // of the value: how its request ended
    static constexpr int changedRole = Qt::UserRole + 1; // whether the row has changed since it was saved
    static constexpr int boardRole = Qt::UserRole + 2;   // of the value: the board's, where it is another

    explicit RegisterTableModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    // Refuses what a cell of the file can't hold: commas and line breaks. Another address
    // or value has no outcome.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    const RegisterRow &row(int row) const { return m_entries.at(row).cells; }
    Outcome outcome(int row) const { return m_entries.at(row).outcome; }
    void setValue(int row, const QString &value);
    // The sender of the reply, if there was one; what was read back of a write.
    void setOutcome(int row, Outcome outcome, const QString &sender = {}, const QString &readBack = {});
    void clearOutcomes();
    const QString &sender(int row) const { return m_entries.at(row).sender; }

    int pageCount() const { return m_entries.size() / rowsPerPage; }
    int filledRows(int page) const;
    bool addPage();            // false at the limit
    void removePage(int page); // the last one that is left is emptied

    int usedRows() const; // up to the last one that is not empty
    QVector<RegisterRow> rowsToSave() const;
    // Puts rows after the used ones, as many as fit. isWholeFile: the file that they
    // come from has no others.
    void append(const QVector<RegisterRow> &rows, bool isWholeFile);
    void clear();
    // These rows instead of all others; no file has them.
    void replace(const QVector<RegisterRow> &rows);
    // What is pasted: cells of any rows, for which pages are added. The texts fit.
    struct Cell
    {
        int row = 0;
        int column = 0;
        QString text;
    };
    void setCells(const QVector<Cell> &cells);

    bool hasUnsavedRows() const { return m_isModified && usedRows() > 0; }
    void setSaved();

private:
    QString outcomeText(int row) const;
    bool addRows(int count); // up to that many, as pages; false where none is missing
    bool setCell(int row, int column, const QString &text);

    struct Entry
    {
        RegisterRow cells;
        Outcome outcome = NoOutcome;
        QString sender;
        QString readBack;
        bool isChanged = false;
    };

    QVector<Entry> m_entries; // complete pages
    bool m_isModified = false;
};
