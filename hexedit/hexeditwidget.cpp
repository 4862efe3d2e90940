#include "hexeditwidget.h"

#include "formpanel.h"
#include "hexchangebar.h"
#include "hexchecksumpanel.h"
#include "hexcommand.h"
#include "hexeditcommands.h"
#include "hexfindpanel.h"
#include "hexinspectorpanel.h"
#include "hexjumppanel.h"
#include "hexrecentbutton.h"
#include "hexstaterow.h"
#include "hextoolrow.h"
#include "qhexedit.h"
#include "qtfiledialog.h"
#include "qtmessagetip.h"
#include "settings.h"

#include <QApplication>
#include <QButtonGroup>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QPushButton>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>
#include <utility>

namespace {

constexpr int kTipMs = 2000;
constexpr int kLongTipMs = 5000; // more to read
constexpr qint64 kLargeFile = qint64(4) << 30;

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
    m_file = new HexFile(m_edit->task(), HexSaver::realDisk(), this);
    buildCommands();
    connectParts();
    reloadCodec();
    setAddress(0);
    setSize(0);
    showState();
}

HexEditWidget::~HexEditWidget()
{
    if (m_file->isSaving())
        QApplication::restoreOverrideCursor();
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
    m_edit = new QHexEdit(area);
    m_edit->setPlaceholderText(QStringLiteral("打开文件，或将文件拖到此处，内容将以十六进制显示"));
    m_edit->setReadOnly(true, QStringLiteral("请先打开文件"));
    auto *inspector = new HexInspectorPanel(m_edit, area);
    m_state = new HexStateRow(m_edit, area);
    column->addWidget(m_tools);
    column->addWidget(m_changeBar);
    column->addWidget(m_edit, 1);
    column->addWidget(inspector);
    column->addWidget(m_state);
    return area;
}

void HexEditWidget::buildCommands()
{
    const auto add = [this](const QString &text, const QList<QKeySequence> &keys,
                            void (HexEditWidget::*slot)()) {
        auto *command = new HexCommand(text, keys, this);
        connect(command, &QAction::triggered, this, slot);
        return command;
    };
    const auto keyOf = [this](int id) {
        return QList<QKeySequence>{m_tools->tools()->button(id)->shortcut()};
    };
    m_openCommand = add(QStringLiteral("打开文件"), keyOf(OpenFile), &HexEditWidget::chooseFile);
    m_commands[OpenFile] = m_openCommand;
    m_commands[SaveFile] = new HexCommand(QStringLiteral("保存文件"), keyOf(SaveFile), this);
    connect(m_commands[SaveFile], &QAction::triggered, this, [this] { saveAnd({}); });
    m_commands[Undo] = m_edit->commands()->undo();
    m_commands[Redo] = m_edit->commands()->redo();
    m_commands[CloseFile] = add(QStringLiteral("关闭文件"), keyOf(CloseFile), &HexEditWidget::closeFile);
    m_saveAsCommand =
        add(QStringLiteral("另存为"), {int(Qt::CTRL) + Qt::SHIFT + Qt::Key_S}, &HexEditWidget::saveAs);
    m_reloadCommand = add(QStringLiteral("重新载入"), {}, &HexEditWidget::reload);
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
    for (HexCommand *command : {m_saveAsCommand, m_find->findCommand(), m_jump->goTo(), m_find->nextCommand(),
                                m_find->previousCommand()})
        command->listenIn(this);
    setPageKeys(nullptr, m_tools->fold());
    connect(m_tools->fold(), &QPushButton::clicked, this, [this] {
        const bool hide = m_panel->isVisible();
        m_panel->setVisible(!hide);
        m_tools->fold()->setText(hide ? QStringLiteral("显示配置界面") : QStringLiteral("隐藏配置界面"));
    });
    connect(m_recent, &HexRecentButton::chosen, this, &HexEditWidget::openFile);
    connect(m_changeBar, &HexChangeBar::reloadWanted, m_reloadCommand, &HexCommand::run);
    connect(m_changeBar, &HexChangeBar::keepWanted, this, &HexEditWidget::keepOurs);

    connect(m_edit, &QHexEdit::currentAddressChanged, this, &HexEditWidget::setAddress);
    connect(m_edit, &QHexEdit::currentSizeChanged, this, &HexEditWidget::setSize);
    connect(m_edit, &QHexEdit::stateChanged, this, &HexEditWidget::showState);
    connect(m_file, &HexFile::readingBegan, this, &HexEditWidget::makeRoom);
    connect(m_file, &HexFile::blockRead, m_edit, &QHexEdit::appendData);
    connect(m_file, &HexFile::changedOutside, this, &HexEditWidget::showOutsideChange);
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
    m_state->showFile(m_file->name(), m_edit->isModified());
    const QString busy = m_edit->busyReason();
    const QString noFile = busy.isEmpty() && !m_file->isOpen() ? QStringLiteral("请先打开文件") : busy;
    for (HexCommand *command : {m_openCommand, m_reloadCommand})
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

// For calls that no command guards, or that a question has delayed.
bool HexEditWidget::refuseWhileBusy() const
{
    const QString busy = m_edit->busyReason();
    if (!busy.isEmpty())
        QtMessageTip::showTip(busy);
    return !busy.isEmpty();
}

// ---- opening

void HexEditWidget::chooseFile()
{
    const QString name =
        QtFileDialog::getOpenFileName(this, QStringLiteral("打开文件"), QString(),
                                      QStringLiteral("固件和数据(*.bin *.img *.rom *.dat);;所有文件(*)"));
    if (!name.isEmpty())
        openFile(name);
}

void HexEditWidget::openFile(const QString &fileName)
{
    if (refuseWhileBusy())
        return;
    withoutEdits([this, fileName] {
        const QString leftover = chosenLeftover(fileName);
        load(fileName, leftover.isEmpty() ? fileName : leftover, 0);
    });
}

// Where a save failed, the bytes may be beside the file, or instead of it.
QString HexEditWidget::chosenLeftover(const QString &fileName)
{
    const QStringList leftovers = m_file->leftoversOf(fileName);
    for (const QString &leftover : leftovers) {
        const QFileInfo file(leftover);
        const QString text = QStringLiteral("有上次保存失败时留下的内容：\n%1\n%2，%3字节\n"
                                            "确定载入它，取消则打开原文件。")
                                 .arg(QDir::toNativeSeparators(leftover),
                                      file.lastModified().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")))
                                 .arg(file.size());
        if (QtMessageBox::question(this, QString(), text) == 1)
            return leftover;
        m_file->decline(leftover);
    }
    return QString();
}

void HexEditWidget::load(const QString &fileName, const QString &source, qint64 address)
{
    const qint64 size = FileStamp::of(source).size;
    if (size > kLargeFile &&
        QtMessageBox::question(this, QString(),
                               QStringLiteral("文件大小为%1 GB，打开需要同样多的内存，确定打开吗？")
                                   .arg(double(size) / double(1 << 30), 0, 'f', 1)) != 1)
        return;
    if (refuseWhileBusy())
        return;
    m_file->open(fileName, source, [this, source, address](const HexFile::Result &result) {
        endOpening(source, address, result);
    });
}

void HexEditWidget::makeRoom()
{
    m_before = Shown{std::move(m_edit->document()), m_edit->address()};
    showDocument({});
    m_edit->setFocus();
}

void HexEditWidget::showDocument(Shown shown)
{
    m_changeBar->hide();
    m_edit->setDocument(std::move(shown.document), shown.address);
    m_edit->setReadOnly(!m_file->isOpen(), QStringLiteral("请先打开文件"));
}

void HexEditWidget::endOpening(const QString &source, qint64 address, const HexFile::Result &result)
{
    auto before = std::exchange(m_before, std::nullopt);
    if (result.done) {
        m_recent->remember(m_file->name());
        if (address > 0)
            m_edit->goTo(address);
        if (!result.inPlace)
            m_edit->setUnsaved();
        if (!result.consequence.isEmpty())
            QtMessageTip::showTip(result.consequence, kLongTipMs);
        return;
    }
    const bool isGone = !before && m_recent->forgetIfGone(source);
    if (before) {
        showDocument(std::move(*before));
        m_file->checkOutside();
    }
    if (isGone)
        QtMessageTip::showTip(QStringLiteral("打开文件失败! 文件已不存在，不再列入最近打开"), kLongTipMs);
    else if (!result.reason.isEmpty())
        QtMessageTip::showTip(QStringLiteral("打开文件失败! ") + result.reason, kLongTipMs);
}

// ---- changes by other programs

void HexEditWidget::showOutsideChange()
{
    const bool edited = m_edit->isModified();
    if (m_file->isGone())
        m_edit->setUnsaved(); // nothing else has these bytes
    m_changeBar->hide();
    if (m_file->isChangedOutside())
        m_changeBar->showChange(m_file->isGone(), edited);
}

void HexEditWidget::reload()
{
    load(m_file->name(), m_file->name(), m_edit->address());
}

// Saving still asks before it overwrites the other program's bytes.
void HexEditWidget::keepOurs()
{
    m_file->acknowledgeOutside();
    m_changeBar->hide();
    m_edit->setUnsaved();
    m_edit->setFocus();
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
    QTimer::singleShot(0, this, [this, name] { openFile(name); });
}

// ---- saving

void HexEditWidget::saveAs()
{
    const QString name = QtFileDialog::getSaveFileName(this, QStringLiteral("另存为"), m_file->name(),
                                                       QStringLiteral("所有文件(*.*)"));
    if (name.isEmpty() || refuseWhileBusy())
        return;
    if (m_file->isSame(name)) {
        saveAnd({});
        return;
    }
    QApplication::setOverrideCursor(Qt::WaitCursor);
    m_file->saveAs(name, m_edit->document(), // the dialog has asked before it overwrites
                   [this, name](const HexFile::Result &result) { endSaving(name, result); });
}

// Calls next() once the bytes are on the disk.
void HexEditWidget::saveAnd(const std::function<void()> &next)
{
    if (refuseWhileBusy() || !mayOverwrite())
        return;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    m_file->save(m_edit->document(), [this, next](const HexFile::Result &result) {
        endSaving(m_file->name(), result);
        if (result.done && next)
            next();
    });
}

bool HexEditWidget::mayOverwrite()
{
    if (!m_file->needsConsent())
        return true;
    if (QtMessageBox::question(this, QStringLiteral("告警"),
                               QStringLiteral("文件打开之后已被其他程序修改，确定用当前内容覆盖吗？")) != 1)
        return false;
    m_file->giveConsent();
    return true;
}

void HexEditWidget::endSaving(const QString &fileName, const HexFile::Result &result)
{
    QApplication::restoreOverrideCursor();
    if (result.inPlace) {
        m_changeBar->hide();
        m_edit->setSaved();
        m_recent->remember(fileName);
    }
    emit signalClosed();
    if (result.done) {
        QtMessageTip::showTip(QStringLiteral("  文件已保存  "), kTipMs);
        if (!result.consequence.isEmpty())
            notify(Notice::error(result.consequence));
        return;
    }
    if (result.reason.isEmpty()) {
        QtMessageTip::showTip(result.consequence, kTipMs);
        return;
    }
    notify(Notice::error(
        QStringLiteral("保存失败：%1。%2").arg(result.reason, result.consequence).simplified()));
    QtMessageBox::warning(this, QStringLiteral("QHexEdit"),
                          QStringLiteral("Cannot write file %1.\n原因：%2\n%3")
                              .arg(QDir::toNativeSeparators(fileName), result.reason, result.consequence));
}

// ---- closing

void HexEditWidget::closeFile()
{
    withoutEdits([this] {
        if (refuseWhileBusy())
            return;
        m_file->close();
        showDocument({});
    });
}

QtMessageBox::SaveAnswer HexEditWidget::askAboutEdits()
{
    return QtMessageBox::saveQuestion(
        this, QString(),
        QStringLiteral("文件有未保存的修改，是否保存？\n%1").arg(QFileInfo(m_file->name()).fileName()));
}

// Calls next() once the edits are saved or discarded.
void HexEditWidget::withoutEdits(const std::function<void()> &next)
{
    const auto answer = m_edit->isModified() ? askAboutEdits() : QtMessageBox::Discard;
    if (answer == QtMessageBox::Discard)
        next();
    else if (answer == QtMessageBox::Save)
        saveAnd(next);
}

// The user asked for the running save: closing waits for it.
bool HexEditWidget::mayClose()
{
    m_exit = m_file->isSaving() ? Exit::SaveBegan : Exit::Undecided;
    if (m_exit == Exit::SaveBegan || !m_edit->isModified())
        return true;
    m_edit->task()->stop(); // saving needs bytes that keep still
    const QtMessageBox::SaveAnswer answer = askAboutEdits();
    if (answer != QtMessageBox::Cancel)
        m_exit = answer == QtMessageBox::Save ? Exit::Save : Exit::Discard;
    return answer == QtMessageBox::Discard || (answer == QtMessageBox::Save && mayOverwrite());
}

void HexEditWidget::closeLinks()
{
    if (m_exit == Exit::Save && m_edit->isModified())
        beginExitSave();
}

bool HexEditWidget::isClosed() const
{
    return !m_file->isSaving();
}

void HexEditWidget::beginExitSave()
{
    m_exit = Exit::SaveBegan;
    m_edit->task()->stop();
    saveAnd({});
}

// At a log-off nothing was begun, and there is no time for the event loop.
bool HexEditWidget::saveBeforeExit()
{
    if (m_edit->isModified() && m_exit == Exit::Undecided) { // edited after the question
        const QtMessageBox::SaveAnswer answer = askAboutEdits();
        if (answer == QtMessageBox::Cancel)
            return false;
        m_exit = answer == QtMessageBox::Save ? Exit::Save : Exit::Discard;
    }
    if (m_edit->isModified() && m_exit == Exit::Save)
        beginExitSave();
    if (m_file->isSaving())
        m_edit->task()->runToEnd();
    const bool isSaved = !m_edit->isModified();
    if (isSaved && m_exit == Exit::SaveBegan)
        m_exit = Exit::Save; // edits after a canceled log-off as well
    return isSaved || m_exit == Exit::Discard;
}
