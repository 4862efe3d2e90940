#pragma once

// The rows of a register table that its dialog shows: those of the page that a page bar
// is at, or, while the user searches, sorts or wants differences only, the filled rows of
// all pages that fit. Values are shown in a base of the user's choice; each whose
// request has ended has a mark, and rows that have changed since they were saved are
// bold. An order is that of the moment when it was chosen: rows don't move while they
// are edited or read. Holds neither cells nor the page.

#include "registercell.h"

#include <QAbstractProxyModel>
#include <QIcon>
#include <QVector>

class QtPageBar;
class RegisterTableModel;

class RegisterViewModel : public QAbstractProxyModel
{
    Q_OBJECT

public:
    explicit RegisterViewModel(RegisterTableModel *table, QObject *parent = nullptr);

    // Which page is shown; the first one without a bar.
    void setPageBar(const QtPageBar *pageBar) { m_pageBar = pageBar; }

    void refresh(); // the page bar has turned, or rows may fit now that did not

    RegisterCell::Base base() const { return m_base; }
    void setBase(RegisterCell::Base base);

    // Rows whose address, value, number or description has the text; empty for all.
    void setSearch(const QString &text);
    // By a column, numbers by their size; -1 for the table's own order.
    void setOrder(int column, Qt::SortOrder order);
    void setDifferencesOnly(bool isOn);
    // Rows of all pages, instead of a page.
    bool isList() const { return !m_search.isEmpty() || m_column >= 0 || m_isDifferencesOnly; }

    // Of these, not all that are filled.
    bool isPartial() const { return !m_search.isEmpty() || m_isDifferencesOnly; }

    int tableRow(int row) const { return m_rows.at(row); }

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QModelIndex mapToSource(const QModelIndex &index) const override;
    QModelIndex mapFromSource(const QModelIndex &index) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    // As typed, see RegisterCell; false where the cell can't hold it.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    void chooseRows();
    bool isFitting(int row, const QString &search) const;
    void sort();
    void forwardChange(const QModelIndex &first, const QModelIndex &last);
    QVariant shownValue(const QModelIndex &index) const;

    RegisterTableModel *m_table;
    const QtPageBar *m_pageBar = nullptr;
    RegisterCell::Base m_base = RegisterCell::Hexadecimal;
    QString m_search;
    int m_column = -1;
    Qt::SortOrder m_order = Qt::AscendingOrder;
    bool m_isDifferencesOnly = false;
    QVector<int> m_rows;   // of the table, in the order shown
    QVector<int> m_places; // of each row of the table in m_rows; -1: not shown
    QIcon m_goodIcon;
    QIcon m_badIcon;
};
