#include "registerviewmodel.h"

#include "iconfont.h"
#include "qtpagebar.h"
#include "registertablemodel.h"

#include <QFont>

#include <algorithm>
#include <tuple>

namespace {

constexpr int kIconPixels = 14;
constexpr int kMaxShown = 500; // wider than any cell; a pasted megabyte takes a second to paint
const QColor kGood(0x34, 0xc3, 0x88);
const QColor kBad(0xf8, 0x69, 0x34);

// Numbers before texts, and both before empty cells.
struct Key
{
    int kind = 2;
    quint32 number = 0;
    QString text;
    int row = 0;

    bool operator<(const Key &other) const
    {
        return std::tie(kind, number, text) < std::tie(other.kind, other.number, other.text);
    }
};

Key keyOf(const RegisterRow &cells, int column, int row)
{
    Key key;
    key.row = row;
    key.text = column == RegisterTableModel::Number    ? cells.number
               : column == RegisterTableModel::Address ? cells.address
               : column == RegisterTableModel::Value   ? cells.value
                                                       : cells.description;
    bool isNumber = false;
    if (column == RegisterTableModel::Number)
        key.number = key.text.toUInt(&isNumber);
    else if (column != RegisterTableModel::Description)
        isNumber = RegisterRow::parse(key.text, &key.number);
    if (isNumber)
        key.text.clear();
    key.kind = isNumber ? 0 : key.text.isEmpty() ? 2 : 1;
    return key;
}

} // namespace

RegisterViewModel::RegisterViewModel(RegisterTableModel *table, QObject *parent)
    : QAbstractProxyModel(parent)
    , m_table(table)
    , m_goodIcon(IconFont::icon(IconFont::CheckCircle, kGood, kIconPixels))
    , m_badIcon(IconFont::icon(IconFont::AlertCircle, kBad, kIconPixels))
{
    setSourceModel(table);
    const auto begin = [this] { beginResetModel(); };
    const auto end = [this] {
        chooseRows();
        endResetModel();
    };
    connect(table, &QAbstractItemModel::modelAboutToBeReset, this, begin);
    connect(table, &QAbstractItemModel::modelReset, this, end);
    connect(table, &QAbstractItemModel::rowsAboutToBeRemoved, this, begin);
    connect(table, &QAbstractItemModel::rowsRemoved, this, end);
    connect(table, &QAbstractItemModel::rowsAboutToBeInserted, this, begin);
    connect(table, &QAbstractItemModel::rowsInserted, this, end);
    connect(table, &QAbstractItemModel::dataChanged, this, &RegisterViewModel::forwardChange);
    chooseRows();
}

// ---- which rows

void RegisterViewModel::refresh()
{
    beginResetModel();
    chooseRows();
    endResetModel();
}

void RegisterViewModel::setBase(RegisterCell::Base base)
{
    if (base == m_base)
        return;
    m_base = base;
    emit headerDataChanged(Qt::Horizontal, RegisterTableModel::Value, RegisterTableModel::Value);
    if (!m_rows.isEmpty())
        emit dataChanged(index(0, RegisterTableModel::Value),
                         index(rowCount() - 1, RegisterTableModel::Value));
}

void RegisterViewModel::setSearch(const QString &text)
{
    m_search = text.trimmed();
    refresh();
}

void RegisterViewModel::setOrder(int column, Qt::SortOrder order)
{
    m_column = column;
    m_order = order;
    refresh();
}

void RegisterViewModel::setDifferencesOnly(bool isOn)
{
    m_isDifferencesOnly = isOn;
    refresh();
}

void RegisterViewModel::chooseRows()
{
    m_rows.clear();
    if (isList()) {
        const int used = m_table->usedRows();
        for (int row = 0; row < used; ++row)
            if (isFitting(row, m_search))
                m_rows.append(row);
        if (m_column >= 0)
            sort();
    } else {
        const int page = m_pageBar ? m_pageBar->currentPage() - 1 : 0;
        const int first = page * RegisterTableModel::rowsPerPage;
        const int end = qMin(m_table->rowCount(), first + RegisterTableModel::rowsPerPage);
        for (int row = first; row < end; ++row)
            m_rows.append(row);
    }
    m_places.fill(-1, m_table->rowCount());
    for (int place = 0; place < m_rows.size(); ++place)
        m_places[m_rows.at(place)] = place;
}

bool RegisterViewModel::isFitting(int row, const QString &search) const
{
    const RegisterRow &cells = m_table->row(row);
    const RegisterTableModel::Outcome outcome = m_table->outcome(row);
    const bool differs = outcome == RegisterTableModel::Differs || outcome == RegisterTableModel::Unequal;
    if (cells.isEmpty() || (m_isDifferencesOnly && !differs))
        return false;
    const bool isPrefixed = search.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    const QString digits = isPrefixed ? search.mid(2) : search;
    const auto has = [](const QString &cell, const QString &text) {
        return cell.contains(text, Qt::CaseInsensitive);
    };
    return search.isEmpty() || has(cells.address, digits) || has(cells.number, search) ||
           has(cells.description, search) ||
           (m_base == RegisterCell::Hexadecimal ? has(cells.value, digits)
                                                : has(RegisterCell::shown(cells.value, m_base), search));
}

void RegisterViewModel::sort()
{
    QVector<Key> keys;
    keys.reserve(m_rows.size());
    for (const int row : qAsConst(m_rows))
        keys.append(keyOf(m_table->row(row), m_column, row));
    const bool isDescending = m_order == Qt::DescendingOrder;
    std::stable_sort(keys.begin(), keys.end(),
                     [isDescending](const Key &a, const Key &b) { return isDescending ? b < a : a < b; });
    std::transform(keys.begin(), keys.end(), m_rows.begin(), [](const Key &key) { return key.row; });
}

void RegisterViewModel::forwardChange(const QModelIndex &first, const QModelIndex &last)
{
    const int columns = last.column();
    if (first.row() == last.row()) {
        const int place = m_places.at(first.row());
        if (place >= 0)
            emit dataChanged(index(place, first.column()), index(place, columns));
    } else if (!m_rows.isEmpty()) {
        emit dataChanged(index(0, first.column()), index(rowCount() - 1, columns));
    }
}

// ---- the model

QModelIndex RegisterViewModel::index(int row, int column, const QModelIndex &parent) const
{
    return hasIndex(row, column, parent) ? createIndex(row, column) : QModelIndex();
}

QModelIndex RegisterViewModel::parent(const QModelIndex &) const
{
    return {};
}

int RegisterViewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows.size();
}

int RegisterViewModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : RegisterTableModel::columns;
}

QModelIndex RegisterViewModel::mapToSource(const QModelIndex &index) const
{
    return index.isValid() ? m_table->index(m_rows.at(index.row()), index.column()) : QModelIndex();
}

QModelIndex RegisterViewModel::mapFromSource(const QModelIndex &index) const
{
    return index.isValid() ? this->index(m_places.value(index.row(), -1), index.column()) : QModelIndex();
}

QVariant RegisterViewModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    if (role == Qt::FontRole && index.data(RegisterTableModel::changedRole).toBool()) {
        QFont font;
        font.setBold(true);
        return font;
    }
    if (role == Qt::DisplayRole) {
        const bool isValue = index.column() == RegisterTableModel::Value;
        return (isValue ? shownValue(index) : QAbstractProxyModel::data(index)).toString().left(kMaxShown);
    }
    if (index.column() != RegisterTableModel::Value)
        return QAbstractProxyModel::data(index, role);
    if (role == Qt::EditRole)
        return RegisterCell::shown(mapToSource(index).data().toString(), m_base);
    if (role != Qt::DecorationRole)
        return QAbstractProxyModel::data(index, role);
    switch (m_table->outcome(m_rows.at(index.row()))) {
    case RegisterTableModel::NoOutcome:
        return {};
    case RegisterTableModel::Answered:
    case RegisterTableModel::Written:
        return m_goodIcon;
    default:
        return m_badIcon;
    }
}

// With the board's, where it is another.
QVariant RegisterViewModel::shownValue(const QModelIndex &index) const
{
    const QString value = RegisterCell::shown(mapToSource(index).data().toString(), m_base);
    const QString board = index.data(RegisterTableModel::boardRole).toString();
    if (board.isEmpty())
        return value;
    return QStringLiteral("%1 ≠ 板上 %2").arg(value, RegisterCell::shown(board, m_base));
}

bool RegisterViewModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || role != Qt::EditRole)
        return false;
    const QString text = value.toString();
    if (text == index.data(Qt::EditRole).toString())
        return true; // an editor that was only opened
    const std::optional<QString> stored = RegisterCell::stored(index.column(), text, m_base);
    return stored && m_table->setData(mapToSource(index), *stored);
}

QVariant RegisterViewModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical)
        return role == Qt::DisplayRole ? m_rows.value(section) + 1 : QVariant();
    const QVariant title = m_table->headerData(section, orientation, role);
    if (role != Qt::DisplayRole || section != RegisterTableModel::Value ||
        m_base == RegisterCell::Hexadecimal)
        return title;
    return title.toString() +
           (m_base == RegisterCell::Decimal ? QStringLiteral("(十进制)") : QStringLiteral("(二进制)"));
}
