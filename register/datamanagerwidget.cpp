#include "datamanagerwidget.h"

#include "iconfont.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "qtpagebar.h"
#include "registercelldelegate.h"
#include "safefile.h"

#include <QButtonGroup>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QHideEvent>
#include <QLabel>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int kMostRows = QtPageBar::mostPages * DataManagerWidget::rowsPerPage;
constexpr int kLinesAtOnce = 5000;          // some milliseconds
constexpr qint64 kMostFileBytes = 64 << 20; // read in one go; far more than the most rows
constexpr int kMarkPixels = 14;
const QColor kGood(0x34, 0xc3, 0x88);
const QColor kBad(0xf8, 0x69, 0x34);

const auto kWarning = QStringLiteral("告警");
const auto kQuestion = QStringLiteral("询问");
const auto kFilter = QStringLiteral("*.csv;;*.txt");
const auto kCannotOpen = QStringLiteral("文件打开失败，请重试！");

enum Button { Import, Export, Clear, Confirm, Cancel };

} // namespace

DataManagerWidget::DataManagerWidget(Mode mode, QWidget *parent)
    : QtFramelessDialog(mode == Read ? QStringLiteral("    读管理    ") : QStringLiteral("    写管理   "),
                        parent)
    , m_mode(mode)
    , m_view(new QTableView(this))
    , m_model(new QStandardItemModel(0, 4, this))
    , m_pageBar(new QtPageBar(this))
    , m_buttons(new QButtonGroup(this))
    , m_stop(new QPushButton(QStringLiteral("停止"), this))
    , m_progress(new QLabel(this))
{
    setObjectName(QStringLiteral("DataManagerWidget"));
    setWindowModality(Qt::NonModal);
    buildUi();
    connect(m_model, &QStandardItemModel::itemChanged, this, &DataManagerWidget::takeEdit);
    connect(m_pageBar, &QtPageBar::signalChangePage, this, &DataManagerWidget::SltChangePage);
    connect(m_pageBar, &QtPageBar::addPage, this, &DataManagerWidget::addPage);
    m_pageBar->setDeleteGuard([this](int page) { return mayDeletePage(page - 1); });
    connect(m_pageBar, &QtPageBar::deletePage, this, &DataManagerWidget::deletePage);
    connect(m_buttons, &QButtonGroup::idClicked, this, &DataManagerWidget::SltButtonClicked);
    connect(m_stop, &QPushButton::clicked, this, &DataManagerWidget::stopRequested);
    connect(this, &DataManagerWidget::signalCloseWindow, this, &QWidget::hide);
    setRows({});
    setBusy(false);
    resize(720, 480);
}

DataManagerWidget::~DataManagerWidget() = default;

void DataManagerWidget::buildUi()
{
    m_model->setHorizontalHeaderLabels(RegisterCsv::titles());
    m_view->setObjectName(QStringLiteral("tableRegisters"));
    m_view->setAccessibleName(windowTitle().trimmed());
    m_view->setModel(m_model);
    m_view->setItemDelegate(new RegisterCellDelegate(m_view));
    m_view->horizontalHeader()->setStretchLastSection(true);
    m_view->horizontalHeader()->setDefaultSectionSize(130);
    m_view->verticalHeader()->setDefaultSectionSize(26);
    m_view->verticalHeader()->setVisible(false);
    m_stop->setObjectName(QStringLiteral("btnStopRegisters"));
    m_stop->setAutoDefault(false);
    m_progress->setObjectName(QStringLiteral("labelRegisterProgress"));

    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    const QStringList captions{QStringLiteral("导入"), QStringLiteral("导出"), QStringLiteral("清空"),
                               QStringLiteral("确定"), QStringLiteral("取消")};
    const char *const names[] = {"btnImport", "btnExport", "btnClear", "btnConfirm", "btnCancel"};
    for (int i = 0; i < captions.size(); ++i) {
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
    body()->addWidget(m_view, 1);
    body()->addWidget(m_pageBar);
    body()->addLayout(row);
}

// ---- pages

void DataManagerWidget::setRows(const QVector<RegisterRow> &rows)
{
    m_rows = rows;
    const int pages = qMax(1, (m_rows.size() + rowsPerPage - 1) / rowsPerPage);
    m_rows.resize(pages * rowsPerPage);
    m_pageBar->reset(pages);
    SltChangePage(1);
}

void DataManagerWidget::SltChangePage(int index)
{
    const int pages = m_rows.size() / rowsPerPage;
    if (index < 1 || index > pages)
        return;
    m_page = index - 1;
    m_model->removeRows(0, m_model->rowCount());
    for (int i = 0; i < rowsPerPage; ++i) {
        const RegisterRow &row = m_rows.at(m_page * rowsPerPage + i);
        m_model->appendRow({new QStandardItem(row.number), new QStandardItem(row.address),
                            new QStandardItem(row.value), new QStandardItem(row.description)});
    }
    m_view->scrollToTop();
    emit signalChangePage(index);
    emit signalRefreshData(index);
}

void DataManagerWidget::addPage()
{
    if (m_rows.size() < kMostRows)
        m_rows.resize(m_rows.size() + rowsPerPage);
    else
        QtMessageTip::showTip(QStringLiteral("寄存器表最多%1页！").arg(QtPageBar::mostPages));
}

bool DataManagerWidget::mayDeletePage(int page)
{
    m_deletedPage = page;
    const auto first = m_rows.cbegin() + page * rowsPerPage;
    const auto filled =
        std::count_if(first, first + rowsPerPage, [](const RegisterRow &row) { return !row.isEmpty(); });
    if (filled == 0)
        return true;
    const QString text = QStringLiteral("当前页有%1行已填写，是否确认删除当前页？").arg(filled);
    if (QtMessageBox::question(this, kQuestion, text) != 1)
        return false;
    m_isModified = true;
    return true;
}

// The bar may already have turned to the page before it.
void DataManagerWidget::deletePage()
{
    m_rows.remove(m_deletedPage * rowsPerPage, rowsPerPage);
    emit rowsMoved();
    SltChangePage(m_pageBar->currentPage());
}

void DataManagerWidget::takeEdit(QStandardItem *item)
{
    RegisterRow &row = m_rows[m_page * rowsPerPage + item->row()];
    QString *const cells[] = {&row.number, &row.address, &row.value, &row.description};
    QString &cell = *cells[item->column()];
    m_isModified = m_isModified || cell != item->text(); // a mark changes the item as well
    cell = item->text();
}

int DataManagerWidget::usedRows() const
{
    int count = m_rows.size();
    while (count > 0 && m_rows.at(count - 1).isEmpty())
        --count;
    return count;
}

int DataManagerWidget::shownRow(int row) const
{
    return row / rowsPerPage == m_page ? row % rowsPerPage : -1;
}

// ---- what the owner has found out

void DataManagerWidget::setValue(int row, const QString &value)
{
    if (row < 0 || row >= m_rows.size())
        return;
    m_isModified = m_isModified || m_rows.at(row).value != value;
    m_rows[row].value = value;
    if (const int shown = shownRow(row); shown >= 0)
        m_model->item(shown, RegisterCellDelegate::Value)->setText(value);
}

void DataManagerWidget::showMark(int row, Mark mark, const QString &why)
{
    const int shown = shownRow(row);
    if (shown < 0)
        return;
    QStandardItem *const item = m_model->item(shown, RegisterCellDelegate::Value);
    item->setToolTip(why);
    if (mark == NoMark)
        item->setIcon({});
    else if (mark == Answered)
        item->setIcon(IconFont::icon(IconFont::CheckCircle, kGood, kMarkPixels));
    else
        item->setIcon(IconFont::icon(IconFont::AlertCircle, kBad, kMarkPixels));
}

void DataManagerWidget::setBusy(bool busy)
{
    m_stop->setVisible(busy);
    for (const int button : {Import, Export, Clear, Confirm})
        m_buttons->button(button)->setEnabled(!busy);
    for (const char *name : {"btnAddPage", "btnDeletePage"})
        m_pageBar->findChild<QPushButton *>(QLatin1String(name))->setEnabled(!busy);
    m_view->setEditTriggers(busy ? QAbstractItemView::NoEditTriggers
                                 : QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                                       QAbstractItemView::AnyKeyPressed);
}

void DataManagerWidget::showProgress(const QString &text)
{
    m_progress->setText(text);
}

void DataManagerWidget::hideEvent(QHideEvent *event)
{
    QtFramelessDialog::hideEvent(event);
    if (!event->spontaneous()) // minimised, it goes on
        emit stopRequested();
}

// ---- buttons

void DataManagerWidget::SltButtonClicked(int index)
{
    switch (index) {
    case Import:
        return importTable();
    case Export:
        exportTable();
        return;
    case Clear:
        return clearTable();
    case Confirm:
        emit confirmed();
        break;
    case Cancel:
        emit signalCloseWindow();
        break;
    default:
        break;
    }
}

bool DataManagerWidget::mayClose()
{
    if (!m_isModified || usedRows() == 0)
        return true;
    const QString text =
        QStringLiteral("寄存器表[%1]有尚未导出的数据，是否保存？").arg(windowTitle().trimmed());
    const auto answer = QtMessageBox::saveQuestion(this, kQuestion, text);
    return answer == QtMessageBox::Save ? exportTable() : answer == QtMessageBox::Discard;
}

bool DataManagerWidget::exportTable()
{
    const QString name = QtFileDialog::getSaveFileName(this, QStringLiteral("导出"), QString(), kFilter);
    if (name.isEmpty())
        return false;
    QString why;
    if (!SafeFile::write(name, RegisterCsv::write(m_rows.mid(0, usedRows())), &why)) {
        showProgress(QStringLiteral("导出失败：%1").arg(why));
        QtMessageBox::warning(this, kWarning, kCannotOpen);
        return false;
    }
    m_isModified = false;
    QtMessageTip::showTip(QStringLiteral("文件导出成功！"));
    return true;
}

void DataManagerWidget::importTable()
{
    const QString name = QtFileDialog::getOpenFileName(this, QStringLiteral("导入"), QString(), kFilter);
    if (name.isEmpty())
        return;
    QByteArray content;
    QString why;
    // What has no size may be a device, which is never read to its end.
    const qint64 size = QFileInfo(name).size();
    if (size == 0)
        why = QFileInfo::exists(name) ? QStringLiteral("文件为空") : QStringLiteral("文件不存在");
    else if (size > kMostFileBytes)
        why = QStringLiteral("文件过大");
    if (!why.isEmpty() || !SafeFile::read(name, kMostFileBytes, &content, &why)) {
        showProgress(QStringLiteral("导入失败：%1").arg(why));
        QtMessageBox::warning(this, kWarning, kCannotOpen);
        return;
    }
    m_reader = std::make_unique<RegisterCsv::Reader>(content, kMostRows - usedRows());
    setBusy(true);
    m_stop->setVisible(false);
    importSome();
}

void DataManagerWidget::importSome()
{
    if (m_reader->read(kLinesAtOnce)) {
        showProgress(QStringLiteral("正在导入：%1 行").arg(m_reader->rows().size()));
        QTimer::singleShot(0, this, &DataManagerWidget::importSome);
        return;
    }
    endImport();
}

void DataManagerWidget::endImport()
{
    const int read = m_reader->rows().size();
    const int skipped = m_reader->skipped();
    const int tooMany = m_reader->tooMany();
    const int first = usedRows();
    m_isModified = read > 0 ? first > 0 || tooMany > 0 : m_isModified; // else it is the file
    setRows(m_rows.mid(0, first) + m_reader->rows());
    m_reader.reset();
    setBusy(false);
    // Where the new rows begin.
    for (int page = 0; page < first / rowsPerPage && read > 0; ++page)
        m_pageBar->SltNextPage();
    QString text = QStringLiteral("读取 %1 行，跳过 %2 行").arg(read).arg(skipped);
    if (tooMany > 0)
        text += QStringLiteral("，超出 %1 行").arg(tooMany);
    showProgress(text);
    QtMessageTip::showTip(QStringLiteral("数据导入完成！！"));
    if (tooMany > 0)
        QtMessageBox::warning(
            this, kWarning,
            QStringLiteral("寄存器表最多%1行，文件中有%2行没有导入！").arg(kMostRows).arg(tooMany));
}

void DataManagerWidget::clearTable()
{
    if (usedRows() > 0 &&
        QtMessageBox::question(this, kQuestion, QStringLiteral("是否清空所有寄存器？")) != 1)
        return;
    setRows({});
    m_isModified = false;
    emit rowsMoved();
    showProgress({});
}
