#include "registertableview.h"

#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "registercelldelegate.h"
#include "registerclipboard.h"
#include "registerviewmodel.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>

#include <algorithm>

RegisterTableView::RegisterTableView(RegisterTableModel *table, QWidget *parent)
    : QTableView(parent)
    , m_table(table)
    , m_rows(new RegisterViewModel(table, this))
{
    setModel(m_rows);
    setItemDelegate(new RegisterCellDelegate(this));
    horizontalHeader()->setStretchLastSection(true);
    horizontalHeader()->setDefaultSectionSize(130);
    horizontalHeader()->setSectionsClickable(true);
    horizontalHeader()->setSortIndicatorShown(true);
    horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    horizontalHeader()->setToolTip(QStringLiteral("点击按此列排列所有页的行：升序、降序、原顺序"));
    verticalHeader()->setDefaultSectionSize(26);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setVisible(false);
    connect(horizontalHeader(), &QHeaderView::sectionClicked, this, &RegisterTableView::sortBy);
    setReadOnly(false);
}

void RegisterTableView::setReadOnly(bool isReadOnly)
{
    m_isReadOnly = isReadOnly;
    setEditTriggers(isReadOnly ? NoEditTriggers : DoubleClicked | EditKeyPressed | AnyKeyPressed);
}

QVector<int> RegisterTableView::selectedTableRows() const
{
    QVector<int> places;
    for (const QModelIndex &index : selectionModel()->selectedIndexes())
        places.append(index.row());
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    std::transform(places.begin(), places.end(), places.begin(),
                   [this](int place) { return m_rows->tableRow(place); });
    return places;
}

// ---- order

void RegisterTableView::sortBy(int column)
{
    if (column != m_column) {
        m_column = column;
        m_order = Qt::AscendingOrder;
    } else if (m_order == Qt::AscendingOrder) {
        m_order = Qt::DescendingOrder;
    } else {
        return resetOrder();
    }
    horizontalHeader()->setSortIndicator(m_column, m_order);
    m_rows->setOrder(m_column, m_order);
    emit orderChanged();
}

void RegisterTableView::resetOrder()
{
    m_column = -1;
    horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    m_rows->setOrder(-1, Qt::AscendingOrder);
    emit orderChanged();
}

// ---- clipboard

void RegisterTableView::copy()
{
    const QString text = RegisterClipboard::text(*m_rows, selectionModel()->selectedIndexes());
    if (!text.isEmpty())
        QApplication::clipboard()->setText(text);
}

void RegisterTableView::paste()
{
    if (m_isReadOnly || !currentIndex().isValid())
        return emit notified(m_isReadOnly ? QString() : QStringLiteral("请先选择粘贴的起始单元格"));
    // From the top left corner of what is selected.
    QModelIndex begin = currentIndex();
    for (const QModelIndex &index : selectionModel()->selectedIndexes())
        begin = m_rows->index(qMin(begin.row(), index.row()), qMin(begin.column(), index.column()));
    const RegisterClipboard::Pasted pasted =
        RegisterClipboard::read(QApplication::clipboard()->text(), *m_rows, *m_table, begin);
    if (!pasted.refusal.isEmpty()) {
        QtMessageTip::showTip(pasted.refusal, 4000);
        return emit notified(pasted.refusal);
    }
    const QString question =
        QStringLiteral("粘贴会覆盖%1个已填写的单元格，是否继续？").arg(pasted.overwritten);
    if (pasted.overwritten > 0 && QtMessageBox::question(this, QStringLiteral("询问"), question) != 1)
        return;
    m_table->setCells(pasted.cells);
    QString text = QStringLiteral("粘贴 %1 行").arg(pasted.rows);
    if (pasted.beyond > 0) {
        text += QStringLiteral("，超出表格 %1 行未粘贴").arg(pasted.beyond);
        QtMessageTip::showTip(text, 4000);
    }
    emit notified(text);
    emit this->pasted();
}
