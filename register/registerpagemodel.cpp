#include "registerpagemodel.h"

#include "iconfont.h"
#include "qtpagebar.h"
#include "registertablemodel.h"

#include <QFont>

namespace {

constexpr int kIconPixels = 14;
const QColor kGood(0x34, 0xc3, 0x88);
const QColor kBad(0xf8, 0x69, 0x34);

} // namespace

RegisterPageModel::RegisterPageModel(RegisterTableModel *table, const QtPageBar *pageBar, QObject *parent)
    : QSortFilterProxyModel(parent)
    , m_pageBar(pageBar)
    , m_goodIcon(IconFont::icon(IconFont::CheckCircle, kGood, kIconPixels))
    , m_badIcon(IconFont::icon(IconFont::AlertCircle, kBad, kIconPixels))
{
    setSourceModel(table);
}

bool RegisterPageModel::filterAcceptsRow(int row, const QModelIndex &) const
{
    return row / RegisterTableModel::rowsPerPage == m_pageBar->currentPage() - 1;
}

QVariant RegisterPageModel::data(const QModelIndex &index, int role) const
{
    if (role == Qt::FontRole && index.data(RegisterTableModel::changedRole).toBool()) {
        QFont font;
        font.setBold(true);
        return font;
    }
    if (role != Qt::DecorationRole || index.column() != RegisterTableModel::Value)
        return QSortFilterProxyModel::data(index, role);
    switch (index.data(RegisterTableModel::outcomeRole).toInt()) {
    case RegisterTableModel::NoOutcome:
        return {};
    case RegisterTableModel::Answered:
    case RegisterTableModel::Written:
        return m_goodIcon;
    default:
        return m_badIcon;
    }
}
