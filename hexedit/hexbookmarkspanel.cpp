#include "hexbookmarkspanel.h"

#include "fonts.h"
#include "hexcommand.h"
#include "hexnoteskeeper.h"
#include "namedialog.h"
#include "qhexedit.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

enum Column { Address, Length, Name, Columns };
constexpr int kRowHeight = 22;
constexpr int kMaxName = 100;

} // namespace

HexBookmarksPanel::HexBookmarksPanel(QHexEdit *edit, HexNotesKeeper *keeper, QWidget *parent)
    : QWidget(parent)
    , m_edit(edit)
    , m_keeper(keeper)
    , m_add(new HexCommand(QStringLiteral("添加书签"), {int(Qt::CTRL) + Qt::Key_D}, this))
    , m_remove(new HexCommand(QStringLiteral("删除"), {}, this))
    , m_color(new HexCommand(QStringLiteral("换颜色"), {}, this))
    , m_beside(new QCheckBox(QStringLiteral("保存在文件旁"), this))
    , m_table(new QTableWidget(0, Columns, this))
{
    setObjectName(QStringLiteral("hexBookmarksPanel"));
    buildUi();
    connect(m_add, &QAction::triggered, this, &HexBookmarksPanel::add);
    connect(m_remove, &QAction::triggered, this, &HexBookmarksPanel::remove);
    connect(m_color, &QAction::triggered, this, &HexBookmarksPanel::changeColor);
    connect(m_beside, &QCheckBox::toggled, m_keeper, &HexNotesKeeper::setBeside);
    connect(m_keeper, &HexNotesKeeper::changed, this, &HexBookmarksPanel::showNotes);
    connect(m_table, &QTableWidget::itemChanged, this, &HexBookmarksPanel::store);
    connect(m_table, &QTableWidget::currentCellChanged, this, [this](int row) {
        if (m_isShowing || row < 0 || row >= m_keeper->notes().bookmarks.size())
            return;
        const HexBookmark &mark = m_keeper->notes().bookmarks.at(row);
        if (const auto offset = m_edit->addresses().offsetOf(mark.address, m_edit->size()))
            m_edit->select(*offset, qMin(mark.length, m_edit->size() - *offset));
        showState();
    });
    connect(m_edit, &QHexEdit::stateChanged, this, &HexBookmarksPanel::showState);
    showNotes();
}

void HexBookmarksPanel::buildUi()
{
    const auto button = [this](HexCommand *command, const char *name, const QString &tip) {
        auto *made = new QPushButton(command->text(), this);
        made->setObjectName(QLatin1String(name));
        made->setToolTip(tip);
        command->bind(made);
        return made;
    };
    auto *row = new QHBoxLayout;
    row->setSpacing(4);
    row->addWidget(button(m_add, "btnAddBookmark", QStringLiteral("为选中的内容或当前字节（Ctrl+D）")));
    row->addWidget(button(m_remove, "btnRemoveBookmark", QStringLiteral("删除选中的书签")));
    row->addWidget(button(m_color, "btnBookmarkColor", QStringLiteral("选中的书签换一种颜色")));
    row->addStretch();
    row->addWidget(m_beside);
    m_beside->setObjectName(QStringLiteral("checkNotesBeside"));
    m_beside->setToolTip(
        QStringLiteral("书签和校验规则保存为文件名加.kvnotes，否则保存在程序的配置文件夹中"));
    m_table->setObjectName(QStringLiteral("tableBookmarks"));
    m_table->setAccessibleName(QStringLiteral("书签"));
    m_table->setHorizontalHeaderLabels(
        {QStringLiteral("地址"), QStringLiteral("长度"), QStringLiteral("名称")});
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setTabKeyNavigation(false);
    m_table->verticalHeader()->setVisible(false);
    m_table->verticalHeader()->setDefaultSectionSize(kRowHeight);
    m_table->horizontalHeader()->setHighlightSections(false);
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setColumnWidth(Address, 130);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    column->addLayout(row);
    column->addWidget(m_table, 1);
}

int HexBookmarksPanel::current() const
{
    const int row = m_table->currentRow();
    return row < m_keeper->notes().bookmarks.size() ? row : -1;
}

void HexBookmarksPanel::add()
{
    HexBookmark mark;
    mark.address = m_edit->shownAddress(m_edit->selectionBegin());
    mark.length = qMax<qint64>(1, m_edit->selectionLength());
    const QString proposal = QStringLiteral("书签%1").arg(
        QString::number(mark.address, 16).toUpper().rightJustified(4, QLatin1Char('0')));
    mark.name =
        NameDialog::ask(window(), QStringLiteral("添加书签"), QStringLiteral("名称"), proposal, kMaxName);
    if (mark.name.isEmpty() || !m_add->isEnabled()) // the file may have been closed meanwhile
        return;
    HexNotes notes = m_keeper->notes();
    mark.color = notes.bookmarks.size() % HexBookmark::colorCount;
    const auto place = std::upper_bound(
        notes.bookmarks.begin(), notes.bookmarks.end(), mark,
        [](const HexBookmark &left, const HexBookmark &right) { return left.address < right.address; });
    notes.bookmarks.insert(place, mark);
    m_keeper->change(notes);
    emit added();
}

void HexBookmarksPanel::remove()
{
    HexNotes notes = m_keeper->notes();
    notes.bookmarks.remove(current());
    m_keeper->change(notes);
}

void HexBookmarksPanel::changeColor()
{
    HexNotes notes = m_keeper->notes();
    HexBookmark &mark = notes.bookmarks[current()];
    mark.color = (mark.color + 1) % HexBookmark::colorCount;
    m_keeper->change(notes);
}

void HexBookmarksPanel::store(QTableWidgetItem *item)
{
    if (m_isShowing || item->column() != Name || item->row() >= m_keeper->notes().bookmarks.size())
        return;
    HexNotes notes = m_keeper->notes();
    notes.bookmarks[item->row()].name = item->text().simplified().left(kMaxName);
    m_keeper->change(notes);
}

void HexBookmarksPanel::showNotes()
{
    m_isShowing = true;
    const auto &marks = m_keeper->notes().bookmarks;
    const int row = m_table->currentRow();
    m_table->setRowCount(marks.size());
    for (int i = 0; i < marks.size(); ++i) {
        const HexBookmark &mark = marks.at(i);
        const QString texts[] = {QStringLiteral("0x") + QString::number(mark.address, 16).toUpper(),
                                 QString::number(mark.length), mark.name};
        for (int column = 0; column < Columns; ++column) {
            auto *item = new QTableWidgetItem(texts[column]);
            if (column != Name) {
                item->setFlags(item->flags() & ~Qt::ItemIsEditable);
                item->setFont(Fonts::monospace());
            }
            if (column == Address)
                item->setBackground(HexMark::ground(mark.color));
            m_table->setItem(i, column, item);
        }
    }
    if (row >= 0 && row < marks.size())
        m_table->setCurrentCell(row, Name);
    m_isShowing = false;
    const QSignalBlocker blocker(m_beside);
    m_beside->setChecked(m_keeper->isBeside());
    showState();
}

void HexBookmarksPanel::showState()
{
    // While another file is read, the notes are still those of the one before.
    const QString noFile = m_keeper->hasFile() ? m_edit->busyReason() : QStringLiteral("请先打开文件");
    m_add->setRefusal(noFile);
    const QString noMark = current() < 0 ? QStringLiteral("请先选中书签") : QString();
    for (HexCommand *command : {m_remove, m_color})
        command->setRefusal(noMark);
}
