#pragma once

// The view of a register table: edits its cells, sorts by a click on a column's title
// (up, down, the table's order again), copies and pastes cells.

#include <QTableView>
#include <QVector>

class RegisterTableModel;
class RegisterViewModel;

class RegisterTableView : public QTableView
{
    Q_OBJECT

public:
    // The table outlives the view.
    explicit RegisterTableView(RegisterTableModel *table, QWidget *parent = nullptr);

    RegisterViewModel *rows() const { return m_rows; }
    void setReadOnly(bool isReadOnly);
    QVector<int> selectedTableRows() const; // in the order shown
    void resetOrder();                      // to the table's own

public slots:
    void copy();
    void paste(); // asks before it overwrites cells

signals:
    void notified(const QString &text); // what became of a paste
    void pasted();                      // there may be more pages
    void orderChanged();

private:
    void sortBy(int column);

    RegisterTableModel *m_table;
    RegisterViewModel *m_rows;
    int m_column = -1;
    Qt::SortOrder m_order = Qt::AscendingOrder;
    bool m_isReadOnly = false;
};
