#pragma once

// The page of a register table that a page bar shows, with a mark on each value
// whose request has ended; rows that have changed since they were saved are bold.
// Holds neither rows nor the page.

#include <QIcon>
#include <QSortFilterProxyModel>

class QtPageBar;
class RegisterTableModel;

class RegisterPageModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    RegisterPageModel(RegisterTableModel *table, const QtPageBar *pageBar, QObject *parent = nullptr);

    // The page bar has turned.
    void turn() { invalidateFilter(); }

    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override;

private:
    const QtPageBar *m_pageBar;
    QIcon m_goodIcon;
    QIcon m_badIcon;
};
