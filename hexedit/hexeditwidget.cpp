#include "hexeditwidget.h"

#include "formpanel.h"
#include "hexbookmarkspanel.h"
#include "hexchangebar.h"
#include "hexchecksumpanel.h"
#include "hexcommand.h"
#include "hexcomparepanel.h"
#include "hexeditcommands.h"
#include "hexfilesession.h"
#include "hexfindpanel.h"
#include "hexfirstaddress.h"
#include "hexhitlist.h"
#include "heximagebar.h"
#include "hexinspectorpanel.h"
#include "hexjumppanel.h"
#include "hexnoteskeeper.h"
#include "hexoperations.h"
#include "hexpanes.h"
#include "hexrecentbutton.h"
#include "hexrulespanel.h"
#include "hexstaterow.h"
#include "hexstringspanel.h"
#include "hextoolrow.h"
#include "namedialog.h"
#include "qhexedit.h"
#include "qtmessagetip.h"
#include "settings.h"

#include <QActionGroup>
#include <QButtonGroup>
#include <QDragEnterEvent>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QSplitter>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

namespace {

constexpr int kPaneHeight = 160;
constexpr int kRoomyHeight = 540; // of the page
constexpr int kMaxDigits = 4;     // of a number that is asked for
constexpr int kTipMs = 3000;

QString onlyFileOf(const QMimeData *data)
{
    const QList<QUrl> urls = data->urls();
    return urls.size() == 1 ? urls.first().toLocalFile() : QString();
}

// After a move, the program that the file comes from would delete it.
bool acceptCopy(QDropEvent *event)
{
    const bool possible = event->possibleActions() & Qt::CopyAction;
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(possible);
    return possible;
}

} // namespace

HexEditWidget::HexEditWidget(QWidget *parent)
    : QtWidgetBase(parent)
{
    setObjectName(QStringLiteral("HexEditWidget"));
    setAcceptDrops(true);
    buildUi();
    m_file = new HexFileSession(m_edit, m_recent, {m_changeBar, m_imageBar}, this);
    buildCommands();
    buildPanes();
    connectParts();
    reloadCodec();
    setAddress(0);
    setSize(0);
    showState();
}

// The editor outlives this part of the page and must not call it any more.
HexEditWidget::~HexEditWidget()
{
    m_edit->task()->disconnect(this);
    m_edit->disconnect(this);
}

void HexEditWidget::buildUi()
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 8, 8, 8);
    row->setSpacing(8);
    QWidget *work = buildWorkArea(); // makes the editor that the panel's groups work on
    row->addWidget(buildPanel());
    row->addWidget(work, 1);
}

QWidget *HexEditWidget::buildPanel()
{
    m_panel = new FormPanel(this);
    m_panel->setObjectName(QStringLiteral("configPanel"));
    FormGroup *files = m_panel->addGroup(QStringLiteral("文件"));
    m_recent = new HexRecentButton(files);
    m_saveAsButton = new QPushButton(QStringLiteral("另存为"), files);
    m_saveAsButton->setObjectName(QStringLiteral("btnSaveAs"));
    m_saveAsButton->setToolTip(QStringLiteral("保存为另一个文件，之后编辑该文件（Ctrl+Shift+S）"));
    files->addPair(m_recent, m_saveAsButton);
    m_jump = new HexJumpPanel(m_edit, m_panel);
    m_find = new HexFindPanel(m_edit, m_panel);
    auto *checksums = new HexChecksumPanel(m_edit, m_panel);
    for (QWidget *group : std::initializer_list<QWidget *>{m_jump, m_find, checksums})
        m_panel->addWidget(group);
    return m_panel;
}

QWidget *HexEditWidget::buildWorkArea()
{
    auto *area = new QWidget; // the layout adds it to the page after the panel, which sets the Tab order
    auto *column = new QVBoxLayout(area);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    m_tools = new HexToolRow(area);
    m_changeBar = new HexChangeBar(area);
    m_imageBar = new HexImageBar(area);
    m_edit = new QHexEdit(area);
    m_edit->setPlaceholderText(QStringLiteral("打开文件，或将文件拖到此处，内容将以十六进制显示"));
    m_edit->setReadOnly(true, QStringLiteral("请先打开文件"));
    m_inspector = new HexInspectorPanel(m_edit, area);
    m_panes = new HexPanes;
    m_state = new HexStateRow(m_edit, area);
    column->addWidget(m_tools);
    column->addWidget(m_changeBar);
    column->addWidget(m_imageBar);
    auto *split = new QSplitter(Qt::Vertical, area);
    split->setObjectName(QStringLiteral("hexSplit"));
    split->setChildrenCollapsible(false);
    auto *bytes = new QWidget(split);
    auto *rows = new QVBoxLayout(bytes);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(4);
    rows->addWidget(m_edit, 1);
    rows->addWidget(m_inspector);
    split->addWidget(bytes);
    split->addWidget(m_panes);
    split->setStretchFactor(0, 1);
    split->setSizes({1000, kPaneHeight});
    column->addWidget(split, 1);
    column->addWidget(m_state);
    return area;
}

void HexEditWidget::buildCommands()
{
    const auto add = [this](const QString &text, const QList<QKeySequence> &keys,
                            void (HexFileSession::*slot)()) {
        auto *command = new HexCommand(text, keys, this);
        connect(command, &QAction::triggered, m_file, slot);
        return command;
    };
    const auto keyOf = [this](int id) {
        return QList<QKeySequence>{m_tools->tools()->button(id)->shortcut()};
    };
    m_newCommand =
        add(QStringLiteral("新建文件（Ctrl+N）"), {int(Qt::CTRL) + Qt::Key_N}, &HexFileSession::makeNew);
    m_recent->setFirst(m_newCommand);
    m_openCommand = add(QStringLiteral("打开文件"), keyOf(OpenFile), &HexFileSession::chooseFile);
    m_commands[OpenFile] = m_openCommand;
    m_commands[SaveFile] = add(QStringLiteral("保存文件"), keyOf(SaveFile), &HexFileSession::save);
    m_commands[Undo] = m_edit->commands()->undo();
    m_commands[Redo] = m_edit->commands()->redo();
    m_commands[CloseFile] = add(QStringLiteral("关闭文件"), keyOf(CloseFile), &HexFileSession::close);
    m_saveAsCommand =
        add(QStringLiteral("另存为"), {int(Qt::CTRL) + Qt::SHIFT + Qt::Key_S}, &HexFileSession::saveAs);
    m_reloadCommand = add(QStringLiteral("重新载入"), {}, &HexFileSession::reload);
    m_edit->addAction((new HexOperations(m_edit))->menuAction()); // in its context menu
    m_edit->addAction(new HexFirstAddress(m_edit));
}

void HexEditWidget::buildPanes()
{
    Settings::HexEditPage &kept = Settings::instance().hexEditPage;
    m_results = new HexHitList(m_edit, "hexResults", QStringLiteral("查找结果"), m_panes);
    auto *list = new QPushButton(m_find->listCommand()->text(), m_results);
    list->setObjectName(QStringLiteral("btnListAll"));
    list->setToolTip(QStringLiteral("列出左侧查找内容的所有位置（Ctrl+Shift+F）"));
    m_find->listCommand()->bind(list);
    m_results->addTool(list);
    m_strings = new HexStringsPanel(m_edit, m_panes);
    m_compare = new HexComparePanel(m_edit, m_panes);
    m_keeper = new HexNotesKeeper(this);
    m_bookmarks = new HexBookmarksPanel(m_edit, m_keeper, m_panes);
    m_rules = new HexRulesPanel(m_edit, m_keeper, m_panes);
    QMenu *const menu = m_tools->viewMenu();
    m_showsInspector = menu->addAction(QStringLiteral("数据解析"));
    m_showsInspector->setObjectName(QStringLiteral("actionHexInspector"));
    m_showsInspector->setCheckable(true);
    m_showsInspector->setChecked(true);
    connect(m_showsInspector, &QAction::toggled, this, &HexEditWidget::showInspector);
    connect(m_panes, &HexPanes::openChanged, this, &HexEditWidget::showInspector);
    addColumnsMenu(menu);
    addSaveMenu(menu);
    menu->addSeparator();
    m_panes->add(m_results, QStringLiteral("查找结果"), "actionHexResults", menu, &kept.showsResults);
    m_panes->add(m_strings, QStringLiteral("字符串"), "actionHexStrings", menu, &kept.showsStrings);
    m_panes->add(m_compare, QStringLiteral("比较"), "actionHexCompare", menu, nullptr);
    m_panes->add(m_bookmarks, QStringLiteral("书签"), "actionHexBookmarks", menu, &kept.showsBookmarks);
    m_panes->add(m_rules, QStringLiteral("校验规则"), "actionHexRules", menu, nullptr);
    connectNotes();
    connect(m_find, &HexFindPanel::listed, this,
            [this](const std::vector<HexHit> &hits, const QString &summary) {
                m_results->show(hits, summary);
                m_panes->open(m_results);
            });
    const auto clear = [this] {
        m_results->clear(QStringLiteral("列出查找内容的所有位置，单击可跳转"));
        m_strings->clear();
    };
    connect(m_edit, &QHexEdit::documentReplaced, this, clear);
    clear();
}

// In a small window an open list takes its place.
void HexEditWidget::showInspector()
{
    const bool isCrowded = m_panes->count() > 0 && height() < kRoomyHeight;
    m_inspector->setVisible(m_showsInspector->isChecked() && !isCrowded);
}

void HexEditWidget::resizeEvent(QResizeEvent *event)
{
    QtWidgetBase::resizeEvent(event);
    showInspector();
}

void HexEditWidget::addColumnsMenu(QMenu *menu)
{
    QMenu *const columns = menu->addMenu(QStringLiteral("每行字节数"));
    auto *group = new QActionGroup(columns);
    Setting<int> &kept = Settings::instance().hexEditPage.bytesPerRow;
    for (const int bytes : {8, 16, 24, 32, 48, 64, 0}) {
        QAction *const action =
            columns->addAction(bytes > 0 ? QString::number(bytes) : QStringLiteral("随窗口宽度"));
        action->setObjectName(QStringLiteral("actionBytesPerRow%1").arg(bytes));
        action->setCheckable(true);
        action->setChecked(bytes == kept);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, bytes, &kept] {
            kept.change(bytes);
            m_edit->setBytesPerRow(bytes);
        });
    }
    m_edit->setBytesPerRow(kept);
}

// How "另存为" writes firmware images.
void HexEditWidget::addSaveMenu(QMenu *menu)
{
    Settings::HexEditPage &kept = Settings::instance().hexEditPage;
    QMenu *const options = menu->addMenu(QStringLiteral("保存固件文件时"));
    const auto add = [this, options](const QString &text, const char *name, const QString &label, int base,
                                     QPair<int, int> range, Setting<int> *setting) {
        QAction *const action = options->addAction(text);
        action->setObjectName(QLatin1String(name));
        connect(action, &QAction::triggered, this, [this, text, label, base, range, setting] {
            const QString typed =
                NameDialog::ask(window(), text, label, QString::number(*setting, base).toUpper(), kMaxDigits);
            bool isNumber = false;
            const int number = typed.toInt(&isNumber, base);
            if (isNumber && number >= range.first && number <= range.second)
                setting->change(number);
            else if (!typed.isEmpty())
                QtMessageTip::showTip(QStringLiteral("未更改：") + label, kTipMs);
        });
    };
    add(QStringLiteral("填充字节…"), "actionFillByte", QStringLiteral("空隙以此字节填充（十六进制，00到FF）"),
        16, {0, 255}, &kept.fillByte);
    add(QStringLiteral("记录长度…"), "actionRecordLength", QStringLiteral("新的记录中的字节数（1到250）"), 10,
        {1, 250}, &kept.recordLength);
}

void HexEditWidget::connectNotes()
{
    m_file->setPreparation([this](const std::function<void(bool)> &next) { m_rules->renew(next); });
    const auto showReadOnly = [this] { m_state->showReadOnly(HexSaver::readOnlyReason(fileName())); };
    connect(m_file, &HexFileSession::opened, this, showReadOnly);
    connect(m_file, &HexFileSession::renamed, this, showReadOnly);
    connect(m_file, &HexFileSession::opened, this, [this] {
        m_keeper->open(fileName());
        m_rules->check();
    });
    connect(m_file, &HexFileSession::renamed, this, [this] { m_keeper->rename(fileName()); });
    connect(m_keeper, &HexNotesKeeper::changed, this, &HexEditWidget::showMarks);
    connect(m_edit, &QHexEdit::contentChanged, this, &HexEditWidget::showMarks);
    connect(m_edit, &QHexEdit::addressesChanged, this, &HexEditWidget::showMarks);
    connect(m_keeper, &HexNotesKeeper::notify, this, &HexEditWidget::notify);
    connect(m_rules, &HexRulesPanel::notify, this, &HexEditWidget::notify);
    connect(m_rules, &HexRulesPanel::checked, this, [this](int wrong) {
        notify(wrong > 0 ? Notice::error(QStringLiteral("有%1条校验规则与文件内容不符").arg(wrong))
                         : Notice::information(QStringLiteral("校验规则全部一致")));
    });
    connect(m_bookmarks, &HexBookmarksPanel::added, this, [this] { m_panes->open(m_bookmarks); });
}

void HexEditWidget::showMarks()
{
    std::vector<HexMark> marks;
    for (const HexBookmark &bookmark : m_keeper->notes().bookmarks)
        if (const auto offset = m_edit->addresses().offsetOf(bookmark.address, m_edit->size()))
            marks.push_back({*offset, *offset + bookmark.length, bookmark.color});
    m_edit->setMarks(std::move(marks));
}

void HexEditWidget::connectParts()
{
    // The group reports a click on a tool button, see sltToolBtnsClicked().
    for (int id = 0; id < HexToolRow::toolCount; ++id)
        m_commands[id]->enableWith(m_tools->tools()->button(id));
    connect(m_tools->tools(), QOverload<int>::of(&QButtonGroup::buttonClicked), this,
            &HexEditWidget::sltToolBtnsClicked);
    m_openCommand->enableWith(m_recent);
    m_saveAsCommand->bind(m_saveAsButton);
    for (HexCommand *command :
         {m_newCommand, m_saveAsCommand, m_find->findCommand(), m_jump->goTo(), m_find->nextCommand(),
          m_find->previousCommand(), m_find->listCommand(), m_compare->nextCommand(),
          m_compare->previousCommand(), m_bookmarks->addCommand()})
        command->listenIn(this);
    setPageKeys(nullptr, m_tools->fold());
    connect(m_tools->fold(), &QPushButton::clicked, this, [this] {
        const bool hide = m_panel->isVisible();
        m_panel->setVisible(!hide);
        m_tools->fold()->setText(hide ? QStringLiteral("显示配置界面") : QStringLiteral("隐藏配置界面"));
    });
    connect(m_recent, &HexRecentButton::chosen, m_file, &HexFileSession::open);
    connect(m_changeBar, &HexChangeBar::reloadWanted, m_reloadCommand, &HexCommand::run);
    connect(m_file, &HexFileSession::notify, this, &HexEditWidget::notify);
    connect(m_file, &HexFileSession::savingEnded, this, &HexEditWidget::signalClosed);

    connect(m_edit, &QHexEdit::currentAddressChanged, this, &HexEditWidget::setAddress);
    connect(m_edit, &QHexEdit::currentSizeChanged, this, &HexEditWidget::setSize);
    connect(m_edit, &QHexEdit::stateChanged, this, &HexEditWidget::showState);
}

// ---- what is shown

QStringList HexEditWidget::counts() const
{
    return {QStringLiteral("Address: %1").arg(m_address), QStringLiteral("Size: %1").arg(m_size)};
}

void HexEditWidget::setSize(qint64 size)
{
    m_size = size;
    m_tools->showSize(counts().at(1));
    emit signalRefresCounts(pageIndex);
}

void HexEditWidget::setAddress(qint64 address)
{
    m_address = address;
    m_tools->showAddress(counts().at(0));
    emit signalRefresCounts(pageIndex);
}

void HexEditWidget::showState()
{
    m_state->showFile(m_file->title(), fileName(), m_edit->isModified());
    const QString busy = m_edit->busyReason();
    const QString noFile = busy.isEmpty() && !m_file->isOpen() ? QStringLiteral("请先打开文件") : busy;
    for (HexCommand *command : {m_newCommand, m_openCommand, m_reloadCommand})
        command->setRefusal(busy);
    for (HexCommand *command : {m_commands[SaveFile], m_saveAsCommand, m_commands[CloseFile]})
        command->setRefusal(noFile);
}

void HexEditWidget::reloadCodec()
{
    m_edit->setTextCodec(Settings::instance().textCodec);
}

void HexEditWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && m_file)
        m_file->checkOutside();
    QtWidgetBase::changeEvent(event);
}

void HexEditWidget::sltToolBtnsClicked(int id)
{
    if (id >= 0 && id < HexToolRow::toolCount)
        m_commands[id]->run();
}

// A button that is disabled leaves its key to the page.
void HexEditWidget::keyPressEvent(QKeyEvent *event)
{
    for (HexCommand *command : m_commands)
        if (command->hasKey(event))
            return command->run();
    QtWidgetBase::keyPressEvent(event);
}

// ---- the file

void HexEditWidget::openFile(const QString &fileName)
{
    m_file->open(fileName);
}

QString HexEditWidget::fileName() const
{
    return m_file->file().name();
}

void HexEditWidget::dragEnterEvent(QDragEnterEvent *event)
{
    if (!onlyFileOf(event->mimeData()).isEmpty())
        acceptCopy(event);
}

void HexEditWidget::dragMoveEvent(QDragMoveEvent *event)
{
    acceptCopy(event);
}

void HexEditWidget::dropEvent(QDropEvent *event)
{
    if (!acceptCopy(event))
        return;
    // A question must not block the program that the file was dragged from.
    const QString name = onlyFileOf(event->mimeData());
    QTimer::singleShot(0, this, [this, name] { m_file->open(name); });
}

bool HexEditWidget::mayClose()
{
    return m_file->mayClose();
}

void HexEditWidget::closeLinks()
{
    m_file->beginClosing();
}

bool HexEditWidget::isClosed() const
{
    return !m_file->isSaving();
}

bool HexEditWidget::saveBeforeExit()
{
    return m_file->saveBeforeExit();
}
