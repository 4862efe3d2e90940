#include "commandpage.h"

#include "buttonrole.h"
#include "commanddelegate.h"
#include "commandmodel.h"
#include "commandset.h"
#include "fonts.h"
#include "namedialog.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "safefile.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>

#include <algorithm>
#include <functional>

namespace {

constexpr int kSaveDelayMs = 500;
constexpr int kRowHeight = 24;
constexpr qint64 kMaxFileBytes = 64LL * 1024 * 1024;
const auto kUsualSet = QStringLiteral("默认");
const auto kCsvFilter = QStringLiteral("CSV文件(*.csv)");
const auto kListFilter = QStringLiteral("多项发送文件(*.txt)");

// Pixels, by column.
constexpr int kWidths[CommandModel::ColumnCount] = {52, 40, 96, 200, 56, 60, 60, 120, 68, 60, 68, 68, 140};

} // namespace

CommandPage::CommandPage(QWidget *parent)
    : QWidget(parent)
    , m_model(new CommandModel(this))
    , m_sets(new QComboBox(this))
    , m_menu(new QPushButton(QStringLiteral("命令集"), this))
    , m_add(new QPushButton(QStringLiteral("添加"), this))
    , m_remove(new QPushButton(QStringLiteral("删除"), this))
    , m_rounds(new QSpinBox(this))
    , m_resumes(new QAction(QStringLiteral("断线重连后继续序列"), this))
    , m_run(new QPushButton(QStringLiteral("运行序列"), this))
    , m_progress(new QLabel(this))
    , m_table(new QTableView(this))
    , m_empty(new QLabel(m_table))
{
    setObjectName(QStringLiteral("widgetCommands"));
    buildUi();
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setInterval(kSaveDelayMs);
    connect(&m_saveTimer, &QTimer::timeout, this, &CommandPage::saveChanges);
    connect(m_model, &CommandModel::changed, this, [this] {
        m_isChanged = true;
        m_saveTimer.start();
    });
    for (const auto change : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(m_model, change, this, [this] { m_empty->setVisible(m_model->rowCount() == 0); });
    connect(m_model, &QAbstractItemModel::modelReset, this,
            [this] { m_empty->setVisible(m_model->rowCount() == 0); });
    connect(m_sets, QOverload<int>::of(&QComboBox::activated), this,
            [this](int index) { openSet(m_sets->itemText(index)); });
    connect(m_add, &QPushButton::clicked, this, &CommandPage::addCommand);
    connect(m_remove, &QPushButton::clicked, this, &CommandPage::removeCommands);
    connect(m_run, &QPushButton::clicked, this, &CommandPage::startOrStop);
    connect(m_table, &QTableView::clicked, this, [this](const QModelIndex &index) {
        if (index.column() == CommandModel::Send)
            sendRow(index.row());
    });
    connect(&m_runner, &CommandRunner::progressed, this, &CommandPage::showProgress);
    connect(&m_runner, &CommandRunner::ended, this, &CommandPage::handleEnded);
    openSet(kUsualSet);
}

CommandPage::~CommandPage()
{
    m_runner.blockSignals(true);
    saveChanges();
}

// ---- building

void CommandPage::buildUi()
{
    buildTable();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 8, 4);
    column->setSpacing(4);
    column->addLayout(buildTop());
    column->addWidget(m_table, 1);
}

QLayout *CommandPage::buildTop()
{
    m_sets->setObjectName(QStringLiteral("comboCommandSet"));
    m_sets->setAccessibleName(QStringLiteral("命令集"));
    m_sets->setMinimumWidth(96);
    m_menu->setObjectName(QStringLiteral("btnCommandMenu"));
    m_menu->setToolTip(QStringLiteral("新建、改名、删除、导入和导出命令集，保存序列报告"));
    auto *menu = new QMenu(this);
    m_menu->setMenu(menu);
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { fillMenu(menu); });
    m_add->setObjectName(QStringLiteral("btnAddCommand"));
    m_remove->setObjectName(QStringLiteral("btnRemoveCommand"));
    m_rounds->setObjectName(QStringLiteral("spinCommandRounds"));
    m_rounds->setRange(0, 99999);
    m_rounds->setValue(1);
    m_rounds->setSuffix(QStringLiteral(" 次"));
    m_rounds->setSpecialValueText(QStringLiteral("循环"));
    m_rounds->setToolTip(QStringLiteral("整个序列运行几次；0：直到停止"));
    m_rounds->setAccessibleName(QStringLiteral("运行次数"));
    m_resumes->setObjectName(QStringLiteral("actionResumeCommands"));
    m_resumes->setCheckable(true);
    m_run->setObjectName(QStringLiteral("btnRunCommands"));
    m_run->setToolTip(QStringLiteral("按顺序发送勾选的命令"));
    m_progress->setObjectName(QStringLiteral("labelCommandProgress"));
    m_progress->setProperty("kind", QStringLiteral("hint"));
    m_progress->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto *row = new QHBoxLayout;
    row->setSpacing(4);
    row->addWidget(m_sets);
    for (QWidget *part :
         {static_cast<QWidget *>(m_menu), static_cast<QWidget *>(m_add), static_cast<QWidget *>(m_remove),
          static_cast<QWidget *>(m_rounds), static_cast<QWidget *>(m_run)})
        row->addWidget(part);
    row->addWidget(m_progress, 1);
    return row;
}

void CommandPage::buildTable()
{
    m_table->setObjectName(QStringLiteral("tableCommands"));
    m_table->setAccessibleName(QStringLiteral("命令"));
    m_table->setModel(m_model);
    m_table->setItemDelegate(new CommandDelegate(m_table));
    m_table->setFont(Fonts::monospace());
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                             QAbstractItemView::AnyKeyPressed);
    m_table->setWordWrap(false);
    m_table->setDragEnabled(true);
    m_table->setAcceptDrops(true);
    m_table->setDropIndicatorShown(true);
    m_table->setDragDropOverwriteMode(false);
    m_table->setDragDropMode(QAbstractItemView::InternalMove);
    m_table->setMinimumHeight(84);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->verticalHeader()->setDefaultSectionSize(kRowHeight);
    m_table->horizontalHeader()->setHighlightSections(false);
    for (int column = 0; column < CommandModel::ColumnCount; ++column)
        m_table->setColumnWidth(column, kWidths[column]);
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->installEventFilter(this);
    m_empty->setObjectName(QStringLiteral("emptyStateText"));
    m_empty->setText(QStringLiteral("点击“添加”写下第一条命令，或从“命令集”导入"));
    m_empty->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_empty->move(12, 36);
    m_empty->adjustSize();
}

void CommandPage::fillMenu(QMenu *menu)
{
    menu->clear();
    const bool isIdle = !m_runner.isRunning();
    menu->addAction(QStringLiteral("新建…"), this, &CommandPage::newSet)->setEnabled(isIdle);
    menu->addAction(QStringLiteral("改名…"), this, &CommandPage::renameSet)->setEnabled(isIdle);
    menu->addAction(QStringLiteral("删除命令集"), this, &CommandPage::removeSet)->setEnabled(isIdle);
    menu->addSeparator();
    menu->addAction(QStringLiteral("导入…"), this, &CommandPage::importSet)->setEnabled(isIdle);
    menu->addAction(QStringLiteral("导出为CSV…"), this, &CommandPage::exportCsv);
    menu->addAction(QStringLiteral("导出为多项发送文件…"), this, &CommandPage::exportList);
    menu->addSeparator();
    menu->addAction(QStringLiteral("全部勾选"), this, [this] { m_model->tickAll(true); });
    menu->addAction(QStringLiteral("全部不勾选"), this, [this] { m_model->tickAll(false); });
    menu->addSeparator();
    menu->addAction(m_resumes);
    menu->addAction(QStringLiteral("保存序列报告…"), this, &CommandPage::saveReport)
        ->setEnabled(!m_runner.sequence().report().empty());
}

void CommandPage::remember(Settings::SendChoices *choices)
{
    m_choices = choices;
    load();
    connect(m_rounds, QOverload<int>::of(&QSpinBox::valueChanged), this,
            [this](int rounds) { m_choices->rounds.change(rounds); });
    connect(m_resumes, &QAction::toggled, this,
            [this](bool resumes) { m_choices->resumesSequence.change(resumes); });
}

void CommandPage::load()
{
    if (!m_choices)
        return;
    m_rounds->setValue(m_choices->rounds);
    m_resumes->setChecked(m_choices->resumesSequence);
    const QString name = m_choices->commandSet;
    if (!m_runner.isRunning() && !name.isEmpty() && name != m_setName)
        openSet(name);
}

// ---- sets

void CommandPage::showSets()
{
    QStringList names = m_store.names();
    if (!names.contains(m_setName))
        names.prepend(m_setName);
    m_sets->clear();
    m_sets->addItems(names);
    m_sets->setCurrentText(m_setName);
}

void CommandPage::openSet(const QString &name)
{
    storeAll();
    m_setName = name;
    QString fault;
    m_model->setCommands(m_store.read(name, &fault));
    m_isChanged = false;
    if (m_choices)
        m_choices->commandSet.change(name);
    showSets();
    if (!fault.isEmpty()) // once the page has been connected
        QTimer::singleShot(0, this, [this, name, fault] {
            emit notify(Notice::error(QStringLiteral("命令集[%1]无法读取：%2").arg(name, fault)));
        });
}

QString CommandPage::saveChanges()
{
    m_saveTimer.stop();
    if (!m_isChanged)
        return {};
    QString reason;
    const QString name = m_store.save(m_setName, m_model->commands(), &reason);
    if (name.isEmpty()) {
        emit notify(Notice::error(QStringLiteral("命令集[%1]保存失败：%2").arg(m_setName, reason)));
        return reason;
    }
    m_isChanged = false;
    if (name != m_setName) {
        emit notify(Notice::error(
            QStringLiteral("命令集[%1]已在别处修改，这里的内容另存为[%2]").arg(m_setName, name)));
        m_setName = name;
        if (m_choices)
            m_choices->commandSet.change(name);
        showSets();
    } else if (m_sets->findText(name) < 0) {
        showSets();
    }
    return {};
}

// What is being typed goes into its cell when the cell loses the keyboard.
void CommandPage::endEditing()
{
    const QWidget *focus = QApplication::focusWidget();
    if (focus && focus != m_table && m_table->isAncestorOf(focus))
        m_table->setFocus();
}

QString CommandPage::storeAll()
{
    endEditing();
    return saveChanges();
}

void CommandPage::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (!m_isChanged && !m_runner.isRunning() && m_store.isOutdated(m_setName))
        openSet(m_setName);
}

void CommandPage::newSet()
{
    const QString name = NameDialog::ask(this, QStringLiteral("新建命令集"), QStringLiteral("命令集名称"), {},
                                         CommandStore::maxNameLength);
    if (name.isEmpty())
        return;
    if (m_store.names().contains(name))
        emit notify(Notice::information(QStringLiteral("命令集[%1]已存在，已打开").arg(name)));
    openSet(name);
    if (m_model->rowCount() == 0)
        addCommand();
}

void CommandPage::renameSet()
{
    const QString name = NameDialog::ask(this, QStringLiteral("命令集改名"), QStringLiteral("命令集名称"),
                                         m_setName, CommandStore::maxNameLength);
    if (name.isEmpty() || name == m_setName)
        return;
    m_isChanged = true; // a set that was never written gets its file
    if (!saveChanges().isEmpty())
        return;
    if (!m_store.rename(m_setName, name)) {
        emit notify(
            Notice::error(QStringLiteral("命令集[%1]改名失败：[%2]已存在或无法写入").arg(m_setName, name)));
        return;
    }
    m_setName = name;
    if (m_choices)
        m_choices->commandSet.change(name);
    showSets();
}

void CommandPage::removeSet()
{
    if (QtMessageBox::question(this, QStringLiteral("询问"),
                               QStringLiteral("确认删除命令集“%1”和其中的%2条命令吗？")
                                   .arg(m_setName)
                                   .arg(m_model->rowCount())) != 1)
        return;
    m_isChanged = false;
    m_saveTimer.stop();
    m_store.remove(m_setName);
    const QStringList names = m_store.names();
    openSet(names.isEmpty() ? kUsualSet : names.first());
}

// Behind the rows that are there.
void CommandPage::importSet()
{
    const QString file = QtFileDialog::getOpenFileName(this, QString(), QString(),
                                                       kCsvFilter + QStringLiteral(";;") + kListFilter +
                                                           QStringLiteral(";;所有文件(*.*)"));
    if (file.isEmpty())
        return;
    QByteArray content;
    QString fault;
    CommandSet::Read read;
    if (SafeFile::read(file, kMaxFileBytes, &content, &fault)) {
        read = CommandSet::fromCsv(content);
        if (!read.fault.isEmpty()) {
            const CommandSet::Read list = CommandSet::fromList(content);
            if (list.fault.isEmpty())
                read = list;
        }
        fault = read.fault;
    }
    if (fault.isEmpty() && !m_model->insert(m_model->rowCount(), read.commands))
        fault = read.commands.isEmpty() ? QStringLiteral("没有命令")
                                        : QStringLiteral("超过%1条命令").arg(CommandSet::maxCommands);
    if (fault.isEmpty())
        emit notify(Notice::information(QStringLiteral("已导入%1条命令").arg(read.commands.size())));
    else
        emit notify(Notice::error(QStringLiteral("命令未导入：%1").arg(fault)));
}

void CommandPage::writeFile(const QString &filter, const QByteArray &content)
{
    const QString file = QtFileDialog::getSaveFileName(this, QString(), QString(), filter);
    QString reason;
    if (file.isEmpty())
        return;
    if (SafeFile::write(file, content, &reason))
        emit notify(Notice::information(QStringLiteral("已保存到%1").arg(file)));
    else
        emit notify(Notice::error(QStringLiteral("保存失败：%1").arg(reason)));
}

void CommandPage::exportCsv()
{
    writeFile(kCsvFilter, CommandSet::toCsv(m_model->commands()));
}

void CommandPage::exportList()
{
    writeFile(kListFilter, CommandSet::toList(m_model->commands()));
}

void CommandPage::saveReport()
{
    writeFile(kCsvFilter, m_runner.reportCsv());
}

// ---- rows

void CommandPage::addCommand()
{
    const int row =
        m_table->currentIndex().isValid() ? m_table->currentIndex().row() + 1 : m_model->rowCount();
    if (!m_model->insert(row, {Command()})) {
        QtMessageTip::showTip(QStringLiteral("最多%1条命令").arg(CommandSet::maxCommands));
        return;
    }
    const QModelIndex text = m_model->index(row, CommandModel::Text);
    m_table->setCurrentIndex(text);
    m_table->edit(text);
}

void CommandPage::removeCommands()
{
    QVector<int> rows;
    bool isFilled = false;
    const QModelIndexList selected = m_table->selectionModel()->selectedRows();
    for (const QModelIndex &index : selected) {
        rows.append(index.row());
        isFilled = isFilled || !m_model->commands().at(index.row()).text.isEmpty();
    }
    if (rows.isEmpty() ||
        (isFilled &&
         QtMessageBox::question(this, QStringLiteral("询问"),
                                QStringLiteral("确认删除选中的%1条命令吗？").arg(rows.size())) != 1))
        return;
    std::sort(rows.begin(), rows.end(), std::greater<int>());
    for (const int row : qAsConst(rows))
        m_model->remove(row, 1);
}

bool CommandPage::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_table || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const auto *press = static_cast<QKeyEvent *>(event);
    const bool isEnter = press->key() == Qt::Key_Return || press->key() == Qt::Key_Enter;
    if (isEnter && !press->isAutoRepeat() && m_table->currentIndex().isValid())
        sendRow(m_table->currentIndex().row());
    else if (press->key() == Qt::Key_Delete)
        removeCommands();
    else if (press->key() == Qt::Key_Insert)
        addCommand();
    else if (!isEnter)
        return QWidget::eventFilter(watched, event);
    return true;
}

// ---- sending

bool CommandPage::hasDevice()
{
    bool isThere = false;
    emit deviceNeeded(&isThere);
    return isThere;
}

void CommandPage::sendRow(int row)
{
    if (!hasDevice())
        return;
    QString fault;
    const QByteArray bytes = m_model->commands().at(row).bytes(Settings::instance().textCodec, &fault);
    if (fault.isEmpty())
        m_runner.transmit()(bytes, &fault);
    if (!fault.isEmpty())
        emit notify(Notice::error(QStringLiteral("第%1条命令未发送：%2").arg(row + 1).arg(fault)));
}

void CommandPage::startOrStop()
{
    if (m_runner.isRunning())
        return m_runner.stop();
    endEditing();
    if (!hasDevice())
        return;
    QVector<CommandSequence::Row> rows;
    for (int i = 0; i < m_model->rowCount(); ++i)
        if (m_model->commands().at(i).isTicked)
            rows.append({i, m_model->commands().at(i)});
    if (rows.isEmpty())
        return QtMessageTip::showTip(QStringLiteral("请先勾选要发送的命令"));
    m_runner.start(rows, m_rounds->value(), Settings::instance().textCodec);
}

void CommandPage::setDeviceOpen(bool open)
{
    if (m_isOpen == open)
        return;
    m_isOpen = open;
    if (!m_runner.isRunning())
        return;
    if (open || m_resumes->isChecked()) {
        m_runner.setPaused(!open);
        showProgress();
    } else {
        m_runner.stop();
    }
}

void CommandPage::showProgress()
{
    const CommandSequence &sequence = m_runner.sequence();
    const bool isRunning = sequence.isRunning();
    m_run->setText(isRunning ? QStringLiteral("停止序列") : QStringLiteral("运行序列"));
    m_sets->setEnabled(!isRunning);
    m_model->setPresentRow(isRunning ? sequence.row() : -1);
    if (!isRunning)
        return;
    const QString rounds = sequence.rounds() > 0
                               ? QStringLiteral("第%1/%2轮").arg(sequence.round()).arg(sequence.rounds())
                               : QStringLiteral("第%1轮").arg(sequence.round());
    m_progress->setText(QStringLiteral("%1 第%2条 已发送%3条%4")
                            .arg(rounds)
                            .arg(sequence.row() + 1)
                            .arg(sequence.sent())
                            .arg(m_runner.isPaused() ? QStringLiteral("，等待重新连接") : QString()));
}

void CommandPage::handleEnded()
{
    const CommandSequence &sequence = m_runner.sequence();
    m_progress->setText(QStringLiteral("已结束，共发送%1条").arg(sequence.sent()));
    if (!sequence.fault().isEmpty())
        emit notify(Notice::error(QStringLiteral("序列已停止：%1").arg(sequence.fault())));
    else if (!m_isOpen)
        emit notify(Notice::error(QStringLiteral("序列已停止：连接已断开")));
    else
        emit notify(Notice::information(QStringLiteral("序列已结束，共发送%1条命令").arg(sequence.sent())));
}
