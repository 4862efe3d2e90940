#include "registertablemodel.h"

#include "registercsv.h"

#include <algorithm>

namespace {

QString RegisterRow::*cellOf(int column)
{
    constexpr QString RegisterRow::*cells[] = {&RegisterRow::number, &RegisterRow::address,
                                               &RegisterRow::value, &RegisterRow::description};
    return cells[column];
}

} // namespace

RegisterTableModel::RegisterTableModel(QObject *parent)
    : QAbstractTableModel(parent)
    , m_entries(rowsPerPage)
{
}

int RegisterTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_entries.size();
}

int RegisterTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : columns;
}

QVariant RegisterTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const Entry &entry = m_entries.at(index.row());
    if (role == Qt::DisplayRole || role == Qt::EditRole)
        return entry.cells.*cellOf(index.column());
    if (role == changedRole)
        return entry.isChanged;
    if (index.column() == Value && role == outcomeRole)
        return entry.outcome;
    if (index.column() == Value && role == boardRole)
        return entry.outcome == Differs || entry.outcome == Unequal ? entry.readBack : QString();
    if (index.column() == Value && role == Qt::ToolTipRole)
        return outcomeText(index.row());
    return {};
}

bool RegisterTableModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const QString text = value.toString();
    const bool fitsFile = std::none_of(text.begin(), text.end(), [](QChar c) {
        return c == QLatin1Char(',') || c == QLatin1Char('\n') || c == QLatin1Char('\r');
    });
    if (!index.isValid() || role != Qt::EditRole || !fitsFile)
        return false;
    if (setCell(index.row(), index.column(), text))
        emit dataChanged(index.siblingAtColumn(0), index.siblingAtColumn(columns - 1));
    return true;
}

bool RegisterTableModel::setCell(int row, int column, const QString &text)
{
    Entry &entry = m_entries[row];
    QString &cell = entry.cells.*cellOf(column);
    if (cell == text)
        return false;
    cell = text;
    m_isModified = true;
    entry.isChanged = true;
    if (column == Address || column == Value) {
        entry.outcome = NoOutcome;
        entry.sender.clear();
        entry.readBack.clear();
    }
    return true;
}

void RegisterTableModel::setCells(const QVector<Cell> &cells)
{
    int first = maxRows;
    int last = -1;
    int rows = 0;
    for (const Cell &cell : cells)
        rows = qMax(rows, cell.row + 1);
    addRows(rows);
    for (const Cell &cell : cells) {
        if (cell.row < rowCount() && setCell(cell.row, cell.column, cell.text)) {
            first = qMin(first, cell.row);
            last = qMax(last, cell.row);
        }
    }
    if (last >= 0)
        emit dataChanged(index(first, 0), index(last, columns - 1));
}

QVariant RegisterTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    return RegisterCsv::titles().value(section);
}

Qt::ItemFlags RegisterTableModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    return index.isValid() ? flags | Qt::ItemIsEditable : flags;
}

void RegisterTableModel::setValue(int row, const QString &value)
{
    setData(index(row, Value), value);
}

void RegisterTableModel::setSaved()
{
    m_isModified = false;
    for (Entry &entry : m_entries)
        entry.isChanged = false;
    emit dataChanged(index(0, 0), index(rowCount() - 1, columns - 1), {changedRole, Qt::FontRole});
}

QString RegisterTableModel::outcomeText(int row) const
{
    const Entry &entry = m_entries.at(row);
    QStringList lines;
    if (entry.outcome == Unanswered)
        lines += QStringLiteral("开发板没有应答");
    else if (entry.outcome == Refused || entry.outcome == NotSent)
        lines += QStringLiteral("开发板报告错误，或地址、值与设置的长度不符");
    else if (entry.outcome == Differs)
        lines += QStringLiteral("回读为%1，与写入的值不同").arg(entry.readBack);
    else if (entry.outcome == Unequal)
        lines += QStringLiteral("开发板的值为%1，与表中的不同").arg(entry.readBack);
    if (!entry.sender.isEmpty())
        lines += QStringLiteral("应答者：%1").arg(entry.sender);
    return lines.join(QLatin1Char('\n'));
}

void RegisterTableModel::setOutcome(int row, Outcome outcome, const QString &sender, const QString &readBack)
{
    Entry &entry = m_entries[row];
    if (entry.outcome == outcome && entry.sender == sender && entry.readBack == readBack)
        return;
    entry.outcome = outcome;
    entry.sender = sender;
    entry.readBack = readBack;
    const QModelIndex changed = index(row, Value);
    emit dataChanged(changed, changed, {outcomeRole, Qt::ToolTipRole});
}

void RegisterTableModel::clearOutcomes()
{
    for (Entry &entry : m_entries) {
        entry.outcome = NoOutcome;
        entry.sender.clear();
        entry.readBack.clear();
    }
    emit dataChanged(index(0, Value), index(rowCount() - 1, Value), {outcomeRole, Qt::ToolTipRole});
}

int RegisterTableModel::filledRows(int page) const
{
    const auto first = m_entries.begin() + static_cast<qsizetype>(page) * rowsPerPage;
    return static_cast<int>(
        std::count_if(first, first + rowsPerPage, [](const Entry &entry) { return !entry.cells.isEmpty(); }));
}

bool RegisterTableModel::addPage()
{
    return addRows(m_entries.size() + 1);
}

bool RegisterTableModel::addRows(int count)
{
    const int pages = (qMin(count, maxRows) + rowsPerPage - 1) / rowsPerPage;
    const int rows = m_entries.size();
    if (pages * rowsPerPage <= rows)
        return false;
    beginInsertRows({}, rows, pages * rowsPerPage - 1);
    m_entries.resize(pages * rowsPerPage);
    endInsertRows();
    return true;
}

void RegisterTableModel::removePage(int page)
{
    m_isModified = m_isModified || filledRows(page) > 0;
    if (pageCount() == 1)
        addPage();
    const int first = page * rowsPerPage;
    beginRemoveRows({}, first, first + rowsPerPage - 1);
    m_entries.remove(first, rowsPerPage);
    endRemoveRows();
}

int RegisterTableModel::usedRows() const
{
    const auto last = std::find_if(m_entries.rbegin(), m_entries.rend(),
                                   [](const Entry &entry) { return !entry.cells.isEmpty(); });
    return static_cast<int>(m_entries.rend() - last);
}

QVector<RegisterRow> RegisterTableModel::rowsToSave() const
{
    QVector<RegisterRow> rows(usedRows());
    std::transform(m_entries.begin(), m_entries.begin() + rows.size(), rows.begin(),
                   [](const Entry &entry) { return entry.cells; });
    return rows;
}

void RegisterTableModel::append(const QVector<RegisterRow> &rows, bool isWholeFile)
{
    const int used = usedRows();
    const int added = qMin(rows.size(), maxRows - used);
    if (added > 0) // a file read into an empty table is that table
        m_isModified = used > 0 || added < rows.size() || !isWholeFile;
    const int pages = qMax(1, (used + added + rowsPerPage - 1) / rowsPerPage);
    beginResetModel();
    m_entries.resize(used);
    m_entries.resize(pages * rowsPerPage);
    for (int i = 0; i < added; ++i)
        m_entries[used + i].cells = rows.at(i);
    endResetModel();
}

void RegisterTableModel::replace(const QVector<RegisterRow> &rows)
{
    clear();
    append(rows, false);
}

void RegisterTableModel::clear()
{
    beginResetModel();
    m_entries = QVector<Entry>(rowsPerPage);
    m_isModified = false;
    endResetModel();
}
