#include "datamanagerwidget.h"

#include "placeholdertext.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "qtpagebar.h"
#include "registerbatchbar.h"
#include "registermenu.h"
#include "registertablemodel.h"
#include "registertableview.h"
#include "registerviewmodel.h"
#include "settings.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QHideEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {

const auto kWarning = QStringLiteral("告警");
const auto kQuestion = QStringLiteral("询问");
const auto kFilter = QStringLiteral("*.csv;;*.txt");
const auto kListFilter = QStringLiteral("地址和值的列表(*.h *.c *.txt *.ini *.set)");
const auto kImportFilters = kFilter + QStringLiteral(";;") + kListFilter + QStringLiteral(";;所有文件(*)");
const auto kExportFilters = kFilter + QStringLiteral(";;C 数组(*.c);;C 头文件(*.h)");

enum Button { Import, Export, Clear, Confirm, Cancel };

} // namespace

DataManagerWidget::DataManagerWidget(Mode mode, RegisterTableModel *table, QWidget *parent)
    : QtFramelessDialog(mode == Read ? QStringLiteral("    读管理    ") : QStringLiteral("    写管理   "),
                        parent)
    , m_mode(mode)
    , m_table(table)
    , m_file(table)
    , m_search(new QLineEdit(this))
    , m_found(new QLabel(this))
    , m_view(new RegisterTableView(table, this))
    , m_pageBar(new QtPageBar(this))
    , m_menu(new RegisterMenu(mode == Read, m_view, this))
    , m_batchBar(new RegisterBatchBar(this))
    , m_buttons(new QButtonGroup(this))
    , m_stop(new QPushButton(QStringLiteral("停止"), this))
    , m_progress(new QLabel(this))
{
    setObjectName(QStringLiteral("DataManagerWidget"));
    setWindowModality(Qt::NonModal);
    m_view->rows()->setPageBar(m_pageBar);
    buildUi();
    connectParts();
    connectMenu();
    m_pageBar->reset(m_table->pageCount());
    setBusy(false);
    resize(720, 480);
}

void DataManagerWidget::buildUi()
{
    m_view->setObjectName(QStringLiteral("tableRegisters"));
    m_view->setAccessibleName(windowTitle().trimmed());
    m_stop->setObjectName(QStringLiteral("btnStopRegisters"));
    m_stop->setAutoDefault(false);
    m_progress->setObjectName(QStringLiteral("labelRegisterProgress"));

    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    const QStringList captions{QStringLiteral("导入"), QStringLiteral("导出"), QStringLiteral("清空"),
                               QStringLiteral("确定"), QStringLiteral("取消")};
    const char *const names[] = {"btnImport", "btnExport", "btnClear", "btnConfirm", "btnCancel"};
    for (int i = 0; i < captions.size(); ++i) {
        if (i == Confirm)
            addMoreButton(row);
        auto *button = new QPushButton(captions.at(i), this);
        button->setObjectName(QLatin1String(names[i]));
        button->setAutoDefault(false); // Return belongs to the cells
        button->setProperty("primary", i == Confirm);
        m_buttons->addButton(button, i);
        if (i == Confirm) {
            row->addWidget(m_progress, 1);
            row->addWidget(m_stop);
        }
        row->addWidget(button);
    }
    m_buttons->button(Confirm)->setToolTip(m_mode == Read ? QStringLiteral("从开发板读取表中所有寄存器")
                                                          : QStringLiteral("把表中所有寄存器写入开发板"));
    m_searchBar = buildSearch();
    m_batchBar->hide();
    body()->addWidget(m_searchBar);
    body()->addWidget(m_view, 1);
    body()->addWidget(m_batchBar);
    body()->addWidget(m_pageBar);
    body()->addLayout(row);
}

void DataManagerWidget::addMoreButton(QHBoxLayout *row)
{
    auto *more = new QPushButton(QStringLiteral("更多"), this);
    more->setObjectName(QStringLiteral("btnMoreRegisters"));
    more->setAutoDefault(false);
    more->setMenu(m_menu);
    row->addWidget(more);
}

QWidget *DataManagerWidget::buildSearch()
{
    auto *bar = new QWidget(this);
    auto *row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    m_search->setObjectName(QStringLiteral("editFindRegister"));
    m_search->setAccessibleName(QStringLiteral("查找"));
    m_search->setPlaceholderText(QStringLiteral("在所有页中查找地址、值、编号或描述"));
    PlaceholderText::keepFaint(m_search);
    m_found->setObjectName(QStringLiteral("labelFoundRegisters"));
    row->addWidget(m_search, 1);
    row->addWidget(m_found);
    bar->hide();
    return bar;
}

void DataManagerWidget::connectParts()
{
    connect(m_pageBar, &QtPageBar::signalChangePage, this, &DataManagerWidget::SltChangePage);
    connect(m_pageBar, &QtPageBar::addPage, this, &DataManagerWidget::addPage);
    m_pageBar->setDeleteGuard([this](int page) { return askToDeletePage(page); });
    m_pageBar->setOnlyPageHandler([this] {
        const int filled = m_table->filledRows(0);
        const QString text = QStringLiteral("只有一页，其中%1行已填写，是否清空？").arg(filled);
        if (filled == 0 || QtMessageBox::question(this, kQuestion, text) != 1)
            return;
        m_table->removePage(0); // which empties it
        SltChangePage(1);
    });
    connect(m_pageBar, &QtPageBar::deletePage, this, [this](int shownPage) {
        m_table->removePage(m_pageToDelete - 1);
        SltChangePage(shownPage);
    });
    connect(m_buttons, &QButtonGroup::idClicked, this, &DataManagerWidget::SltButtonClicked);
    connect(m_stop, &QPushButton::clicked, this, &DataManagerWidget::stopRequested);
    connect(this, &DataManagerWidget::signalCloseWindow, this, &QWidget::hide);
}

void DataManagerWidget::connectMenu()
{
    const auto on = [this](RegisterMenu::Action action, auto slot) {
        connect(m_menu->action(action), &QAction::triggered, this, slot);
    };
    on(RegisterMenu::Find, &DataManagerWidget::showSearch);
    on(RegisterMenu::Copy, [this] { m_view->copy(); });
    on(RegisterMenu::Paste, [this] { m_view->paste(); });
    on(RegisterMenu::Selected, &DataManagerWidget::confirmSelected);
    on(RegisterMenu::Compare, &DataManagerWidget::compareRequested);
    on(RegisterMenu::CopyReadTable, &DataManagerWidget::readTableRequested);
    on(RegisterMenu::SaveReport, &DataManagerWidget::reportRequested);
    on(RegisterMenu::BatchOptions, [this](bool isOn) { m_batchBar->setVisible(isOn); });
    on(RegisterMenu::DifferencesOnly, [this](bool isOn) {
        m_view->rows()->setDifferencesOnly(isOn);
        showRows();
    });
    connect(m_menu, &RegisterMenu::baseChosen, this, [this](int base) {
        Settings::instance().cameraPage.valueBase.set(base);
        m_view->rows()->setBase(static_cast<RegisterCell::Base>(base));
    });
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString &text) {
        m_view->rows()->setSearch(text);
        showRows();
    });
    connect(m_view, &RegisterTableView::orderChanged, this, &DataManagerWidget::showRows);
    connect(m_view, &RegisterTableView::notified, this, &DataManagerWidget::showProgress);
    connect(m_view, &RegisterTableView::pasted, this, [this] {
        const int page = m_pageBar->currentPage();
        m_pageBar->reset(m_table->pageCount());
        m_pageBar->setCurrentPage(page);
    });
}

void DataManagerWidget::addOption(QAction *option)
{
    m_menu->insertAction(m_menu->action(RegisterMenu::SaveReport), option);
}

// ---- rows of all pages

void DataManagerWidget::showSearch(bool isOn)
{
    m_menu->action(RegisterMenu::Find)->setChecked(isOn);
    m_searchBar->setVisible(isOn);
    if (!isOn)
        m_search->clear();
    (isOn ? static_cast<QWidget *>(m_search) : m_view)->setFocus();
}

void DataManagerWidget::showRows()
{
    const bool isList = m_view->rows()->isList();
    m_view->verticalHeader()->setVisible(isList); // where a row is in the table
    m_pageBar->setEnabled(!isList);
    m_found->setText(isList ? QStringLiteral("%1 行").arg(m_view->rows()->rowCount()) : QString());
    m_pageBar->setToolTip(isList ? QStringLiteral("查找、排序和只显示不同的行时，列出所有页的行")
                                 : QString());
    m_view->scrollToTop();
}

void DataManagerWidget::showPages()
{
    m_menu->action(RegisterMenu::DifferencesOnly)->setChecked(false);
    m_view->rows()->setDifferencesOnly(false);
    showSearch(false);
    m_view->resetOrder();
}

void DataManagerWidget::confirmSelected()
{
    const QVector<int> rows = m_view->selectedTableRows();
    if (rows.isEmpty())
        showProgress(QStringLiteral("没有选中的行"));
    else
        emit rowsConfirmed(rows);
}

void DataManagerWidget::copyRows(const QVector<RegisterRow> &rows)
{
    const QString text =
        QStringLiteral("当前表有%1行，复制会替换所有行，是否继续？").arg(m_table->usedRows());
    if (rows.isEmpty())
        return showProgress(QStringLiteral("读表中没有行"));
    if (m_table->usedRows() > 0 && QtMessageBox::question(this, kQuestion, text) != 1)
        return;
    m_table->replace(rows);
    m_pageBar->reset(m_table->pageCount());
    showPages();
    SltChangePage(1);
    showProgress(QStringLiteral("从读表复制 %1 行").arg(rows.size()));
}

// ---- pages

void DataManagerWidget::SltChangePage(int index)
{
    if (index != m_pageBar->currentPage())
        return m_pageBar->setCurrentPage(index); // which calls this slot
    m_view->rows()->refresh();
    m_view->scrollToTop();
    emit signalChangePage(index);
    emit signalRefreshData(index);
}

void DataManagerWidget::addPage()
{
    if (!m_table->addPage())
        QtMessageTip::showTip(QStringLiteral("寄存器表最多%1页！").arg(RegisterTableModel::maxPages));
}

bool DataManagerWidget::askToDeletePage(int page)
{
    m_pageToDelete = page;
    const int filled = m_table->filledRows(page - 1);
    const QString text = QStringLiteral("当前页有%1行已填写，是否确认删除当前页？").arg(filled);
    return filled == 0 || QtMessageBox::question(this, kQuestion, text) == 1;
}

// ---- what the owner reports

void DataManagerWidget::setBusy(bool busy)
{
    m_stop->setVisible(busy);
    for (const int button : {Import, Export, Clear, Confirm})
        m_buttons->button(button)->setEnabled(!busy);
    for (const char *name : {"btnAddPage", "btnDeletePage"})
        m_pageBar->findChild<QPushButton *>(QLatin1String(name))->setEnabled(!busy);
    m_menu->setBusy(busy);
    m_view->setReadOnly(busy);
    if (!busy && m_menu->action(RegisterMenu::DifferencesOnly)->isChecked()) {
        m_view->rows()->refresh(); // others differ now
        showRows();
    }
}

void DataManagerWidget::showProgress(const QString &text)
{
    m_progress->setText(text);
}

void DataManagerWidget::setLengths(int address, int value)
{
    m_addressLength = address;
    m_valueLength = value;
}

void DataManagerWidget::hideEvent(QHideEvent *event)
{
    QtFramelessDialog::hideEvent(event);
    if (!event->spontaneous()) // minimised, it goes on
        emit stopRequested();
}

void DataManagerWidget::showEvent(QShowEvent *event)
{
    const int base = Settings::instance().cameraPage.valueBase;
    m_menu->setBase(base);
    m_view->rows()->setBase(static_cast<RegisterCell::Base>(base));
    QtFramelessDialog::showEvent(event);
}

// In the search field, Esc ends the search and not the dialog.
void DataManagerWidget::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && m_searchBar->isVisible())
        showSearch(false);
    else
        QtFramelessDialog::keyPressEvent(event);
}

// ---- buttons

void DataManagerWidget::SltButtonClicked(int index)
{
    switch (index) {
    case Import:
        return importTable();
    case Export:
        exportTable(kExportFilters);
        return;
    case Clear:
        return clearTable();
    case Confirm:
        if (mayWriteHidden())
            emit confirmed();
        break;
    case Cancel:
        emit signalCloseWindow();
        break;
    default:
        break;
    }
}

// Someone who sees some rows may think that only these are written.
bool DataManagerWidget::mayWriteHidden()
{
    const QString text =
        QStringLiteral("当前只显示%1行，“确定”会写入表中所有行，是否继续？").arg(m_view->rows()->rowCount());
    return m_mode == Read || !m_view->rows()->isPartial() ||
           QtMessageBox::question(this, kQuestion, text) == 1;
}

bool DataManagerWidget::mayClose()
{
    if (!m_table->hasUnsavedRows())
        return true;
    const QString text =
        QStringLiteral("寄存器表[%1]有尚未导出的数据，是否保存？").arg(windowTitle().trimmed());
    const auto answer = QtMessageBox::saveQuestion(this, kQuestion, text);
    return answer == QtMessageBox::Save ? exportTable(kFilter) : answer == QtMessageBox::Discard;
}

void DataManagerWidget::showFileError(const QString &what, const QString &reason)
{
    showProgress(QStringLiteral("%1失败：%2").arg(what, reason));
    QtMessageBox::warning(this, kWarning, QStringLiteral("文件打开失败，请重试！"));
}

bool DataManagerWidget::exportTable(const QString &filters)
{
    const QString what = QStringLiteral("导出");
    const QString name = QtFileDialog::getSaveFileName(this, what, QString(), filters);
    if (name.isEmpty())
        return false;
    QString reason;
    const bool isC = filters == kExportFilters && RegisterFile::isC(name);
    if (isC ? !m_file.saveAsC(name, m_addressLength, m_valueLength, &reason) : !m_file.save(name, &reason)) {
        showFileError(what, reason);
        return false;
    }
    showProgress(m_table->hasUnsavedRows() ? QStringLiteral("C 文件不含编号和不完整的行，表格仍需导出为 csv")
                                           : QString());
    QtMessageTip::showTip(QStringLiteral("文件导出成功！"));
    return true;
}

void DataManagerWidget::importTable()
{
    const QString what = QStringLiteral("导入");
    QString filter;
    const QString name = QtFileDialog::getOpenFileName(this, what, QString(), kImportFilters, &filter);
    if (name.isEmpty())
        return;
    QString reason;
    if (!m_file.open(name, filter == kListFilter, &reason))
        return showFileError(what, reason);
    showPages();
    setBusy(true);
    m_stop->setVisible(false);
    importSlice();
}

void DataManagerWidget::importSlice()
{
    const int firstNewRow = m_table->usedRows();
    if (m_file.readSlice()) {
        showProgress(QStringLiteral("正在导入：%1 行").arg(m_file.rowsRead()));
        QTimer::singleShot(0, this, &DataManagerWidget::importSlice);
        return;
    }
    m_pageBar->reset(m_table->pageCount());
    SltChangePage(1);
    if (m_file.rowsRead() > 0)
        SltChangePage(firstNewRow / RegisterTableModel::rowsPerPage + 1);
    endImport();
}

void DataManagerWidget::endImport()
{
    setBusy(false);
    const int tooMany = m_file.reader().beyondLimit();
    const int skipped = m_file.reader().skipped();
    QString text = QStringLiteral("读取 %1 行，跳过 %2 行").arg(m_file.rowsRead()).arg(skipped);
    if (skipped > 0)
        text += QStringLiteral("（首行为第 %1 行）").arg(m_file.reader().firstSkipped());
    if (m_file.isList() && m_file.isHexadecimalList())
        text += QStringLiteral("，无前缀的数按十六进制读取");
    if (tooMany > 0)
        text += QStringLiteral("，超出 %1 行").arg(tooMany);
    showProgress(text);
    QtMessageTip::showTip(QStringLiteral("数据导入完成！！"));
    if (tooMany > 0)
        QtMessageBox::warning(this, kWarning,
                              QStringLiteral("寄存器表最多%1行，文件中有%2行没有导入！")
                                  .arg(RegisterTableModel::maxRows)
                                  .arg(tooMany));
}

void DataManagerWidget::clearTable()
{
    if (m_table->usedRows() > 0 &&
        QtMessageBox::question(this, kQuestion, QStringLiteral("是否清空所有寄存器？")) != 1)
        return;
    m_table->clear();
    showPages();
    m_pageBar->reset(m_table->pageCount());
    SltChangePage(1);
    showProgress({});
}
