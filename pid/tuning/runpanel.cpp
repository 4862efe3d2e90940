#include "runpanel.h"

#include "pidrecorder.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "runmodel.h"
#include "safefile.h"
#include "settings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableView>

#include <algorithm>
#include <limits>

namespace {

constexpr int kRefreshMs = 500;
constexpr int kNextMs = 20; // between parts of a long list
constexpr int kRowHeight = 24;
constexpr double kBands[] = {0.02, 0.05};
// Pixels, by column up to the first figure; figures have the last one's.
constexpr int kWidths[] = {40, 44, 88, 80, 92, 56, 56, 56, 44, 68};

} // namespace

RunPanel::RunPanel(PidRecorder *recorder, QWidget *parent)
    : QWidget(parent)
    , m_recorder(recorder)
    , m_model(new RunModel(recorder, this))
    , m_table(new QTableView(this))
    , m_empty(new QLabel(QStringLiteral("启动或改变目标值后，每次阶跃响应将列在这里"), m_table))
    , m_show(new QPushButton(QStringLiteral("查看"), this))
    , m_refer(new QPushButton(QStringLiteral("设为参考"), this))
    , m_hide(new QPushButton(QStringLiteral("隐藏"), this))
    , m_remove(new QPushButton(QStringLiteral("删除"), this))
    , m_export(new QPushButton(QStringLiteral("导出表格"), this))
    , m_band(new QComboBox(this))
    , m_hidden(new QCheckBox(QStringLiteral("显示已隐藏的"), this))
    , m_refresh(this)
{
    buildUi();
    m_refresh.setSingleShot(true);
    m_refresh.setInterval(kRefreshMs);
    connect(&m_refresh, &QTimer::timeout, this, &RunPanel::refresh);
    const auto refreshSoon = [this] {
        if (isVisible() && !m_refresh.isActive())
            m_refresh.start();
    };
    connect(recorder->runs(), &PidRuns::changed, this, refreshSoon);
    connect(recorder, &PidRecorder::sampleAdded, this, refreshSoon);
    connect(recorder, &PidRecorder::recordCleared, this, [this] {
        m_model->figures().clear();
        refresh();
    });
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this, &RunPanel::showChoice);
    connect(m_table, &QTableView::doubleClicked, this, [this](const QModelIndex &index) {
        if (index.column() > RunModel::Reference && index.column() != RunModel::Name)
            emit showRequested(m_model->idAt(index.row()));
    });
    connect(m_show, &QPushButton::clicked, this, [this] { emit showRequested(selected()); });
    connect(m_refer, &QPushButton::clicked, this, &RunPanel::referSelected);
    connect(m_hide, &QPushButton::clicked, this, [this] {
        for (const int id : selectedIds())
            if (const PidRun *run = m_recorder->runs()->find(id))
                m_recorder->runs()->setHidden(id, !run->isHidden);
        refresh();
    });
    connect(m_remove, &QPushButton::clicked, this, &RunPanel::removeSelected);
    connect(m_export, &QPushButton::clicked, this, &RunPanel::exportTable);
    connect(m_hidden, &QCheckBox::toggled, this, [this](bool shows) {
        m_model->setShowsHidden(shows);
        refresh();
    });
    connect(m_band, QOverload<int>::of(&QComboBox::activated), this, [this](int index) {
        Settings::instance().pid.settlingBand.change(index);
        m_model->setBand(kBands[index]);
        refresh();
    });
    load();
}

void RunPanel::buildUi()
{
    m_table->setObjectName(QStringLiteral("tablePidRuns"));
    m_table->setAccessibleName(QStringLiteral("运行记录"));
    m_table->setModel(m_model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_table->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    m_table->setWordWrap(false);
    m_table->setTabKeyNavigation(false);
    m_table->verticalHeader()->setDefaultSectionSize(kRowHeight);
    m_table->verticalHeader()->setVisible(false);
    constexpr int last = int(sizeof kWidths / sizeof *kWidths) - 1;
    for (int column = 0; column < m_model->columnCount(); ++column)
        m_table->setColumnWidth(column, kWidths[std::min(column, last)]);
    m_table->setMinimumHeight(84);
    m_table->horizontalHeader()->setHighlightSections(false);
    m_empty->setObjectName(QStringLiteral("emptyStateText"));
    m_empty->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_empty->move(12, 36);
    m_empty->adjustSize();

    m_show->setObjectName(QStringLiteral("btnShowRun"));
    m_show->setToolTip(QStringLiteral("在曲线区显示选中的运行（也可双击）"));
    m_refer->setObjectName(QStringLiteral("btnReferRun"));
    m_refer->setToolTip(QStringLiteral("作为浅色曲线叠加在同一通道的当前运行上，与其阶跃对齐"));
    m_hide->setObjectName(QStringLiteral("btnHideRun"));
    m_remove->setObjectName(QStringLiteral("btnRemoveRun"));
    m_export->setObjectName(QStringLiteral("btnExportRuns"));
    m_band->setObjectName(QStringLiteral("comboSettlingBand"));
    m_band->setAccessibleName(QStringLiteral("调节时间的误差带"));
    m_band->setToolTip(QStringLiteral("调节时间的误差带，占响应幅度的百分比"));
    m_band->addItems({QStringLiteral("±2%"), QStringLiteral("±5%")});
    m_hidden->setObjectName(QStringLiteral("checkHiddenRuns"));
    auto *row = new QHBoxLayout;
    row->setSpacing(4);
    for (QPushButton *button : {m_show, m_refer, m_hide, m_remove})
        row->addWidget(button);
    row->addWidget(m_hidden);
    row->addStretch();
    auto *band = new QLabel(QStringLiteral("误差带"), this);
    band->setBuddy(m_band);
    row->addWidget(band);
    row->addWidget(m_band);
    row->addWidget(m_export);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 4, 0, 0);
    column->setSpacing(4);
    column->addLayout(row);
    column->addWidget(m_table, 1);
    showChoice();
}

void RunPanel::load()
{
    m_band->setCurrentIndex(Settings::instance().pid.settlingBand);
    m_model->setBand(kBands[m_band->currentIndex()]);
    refresh();
}

void RunPanel::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    refresh();
}

void RunPanel::refresh()
{
    if (m_table->isPersistentEditorOpen(m_table->currentIndex())) { // any editor; it would lose its text
        m_refresh.start();
        return;
    }
    const QVector<int> before = selectedIds();
    m_model->refresh();
    m_refresh.setInterval(m_model->isComplete() ? kRefreshMs : kNextMs);
    if (!m_model->isComplete())
        m_refresh.start();
    if (selectedIds() != before) // the table forgets it where rows were removed
        for (const int id : before)
            if (const int row = m_model->rowOf(id); row >= 0)
                m_table->selectionModel()->select(m_model->index(row, 0),
                                                  QItemSelectionModel::Select | QItemSelectionModel::Rows);
    m_empty->setVisible(m_model->rowCount() == 0);
    showChoice();
}

QVector<int> RunPanel::selectedIds() const
{
    QVector<int> ids;
    const QModelIndexList rows = m_table->selectionModel()->selectedRows();
    for (const QModelIndex &index : rows)
        ids.append(m_model->idAt(index.row()));
    return ids;
}

int RunPanel::selected() const
{
    return selectedIds().value(0);
}

void RunPanel::showChoice()
{
    const int id = selected();
    const PidRun *run = m_recorder->runs()->find(id);
    m_show->setEnabled(run);
    m_refer->setEnabled(run);
    m_refer->setText(run && run->isReference ? QStringLiteral("取消参考") : QStringLiteral("设为参考"));
    m_hide->setEnabled(run);
    m_remove->setEnabled(run);
    m_hide->setText(run && run->isHidden ? QStringLiteral("取消隐藏") : QStringLiteral("隐藏"));
    m_export->setEnabled(m_model->rowCount() > 0);
    emit selectionChanged(id);
}

void RunPanel::referSelected()
{
    const PidRun *first = m_recorder->runs()->find(selected());
    const bool isReference = first && !first->isReference;
    for (const int id : selectedIds())
        m_recorder->runs()->setReference(id, isReference);
    refresh();
}

void RunPanel::removeSelected()
{
    const QVector<int> ids = selectedIds();
    const auto isNamed = [this](int id) {
        const PidRun *run = m_recorder->runs()->find(id);
        return run && !run->name.isEmpty();
    };
    if (std::any_of(ids.begin(), ids.end(), isNamed) &&
        QtMessageBox::question(this, QString(), QStringLiteral("选中的运行已命名，确定要删除吗？")) == 0)
        return;
    for (const int id : ids)
        m_recorder->runs()->remove(id);
    refresh();
}

void RunPanel::exportTable()
{
    const QString fileName = QtFileDialog::getSaveFileName(this, QStringLiteral("导出运行记录"), QString(),
                                                           QStringLiteral("CSV文件(*.csv)"));
    if (fileName.isEmpty())
        return;
    if (!m_model->isComplete())
        m_model->refresh(std::numeric_limits<qint64>::max());
    QString error;
    if (SafeFile::write(fileName, m_model->csv(), &error))
        emit notify(Notice::information(QStringLiteral("文件已导出：") + QDir::toNativeSeparators(fileName)));
    else
        emit notify(
            Notice::error(QStringLiteral("%1 保存失败：%2").arg(QDir::toNativeSeparators(fileName), error)));
}
