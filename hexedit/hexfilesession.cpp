#include "hexfilesession.h"

#include "hexchangebar.h"
#include "hexrecentbutton.h"
#include "notice.h"
#include "qhexedit.h"
#include "qtfiledialog.h"
#include "qtmessagetip.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <utility>

namespace {

constexpr int kTipMs = 2000;
constexpr int kLongTipMs = 5000; // more to read
constexpr qint64 kLargeFile = qint64(4) << 30;

} // namespace

HexFileSession::HexFileSession(QHexEdit *edit, HexRecentButton *recent, HexChangeBar *changeBar,
                               QWidget *page)
    : QObject(page)
    , m_edit(edit)
    , m_recent(recent)
    , m_changeBar(changeBar)
    , m_page(page)
    , m_file(new HexFile(edit->task(), HexSaver::realDisk(), this))
{
    connect(m_file, &HexFile::readingBegan, this, &HexFileSession::makeRoom);
    connect(m_file, &HexFile::blockRead, m_edit, &QHexEdit::appendData);
    connect(m_file, &HexFile::changedOutside, this, &HexFileSession::showOutsideChange);
    connect(m_changeBar, &HexChangeBar::keepWanted, this, &HexFileSession::keepOurs);
}

HexFileSession::~HexFileSession()
{
    if (m_file->isSaving())
        QApplication::restoreOverrideCursor();
}

// For calls that no command guards, or that a question has delayed.
bool HexFileSession::refuseWhileBusy() const
{
    const QString busy = m_edit->busyReason();
    if (!busy.isEmpty())
        QtMessageTip::showTip(busy);
    return !busy.isEmpty();
}

// ---- opening

void HexFileSession::chooseFile()
{
    const QString name =
        QtFileDialog::getOpenFileName(m_page, QStringLiteral("打开文件"), QString(),
                                      QStringLiteral("固件和数据(*.bin *.img *.rom *.dat);;所有文件(*)"));
    if (!name.isEmpty())
        open(name);
}

void HexFileSession::open(const QString &fileName)
{
    if (refuseWhileBusy())
        return;
    withoutEdits([this, fileName] {
        const QString leftover = chosenLeftover(fileName);
        load(fileName, leftover.isEmpty() ? fileName : leftover, 0);
    });
}

// Where a save failed, the bytes may be beside the file, or instead of it.
QString HexFileSession::chosenLeftover(const QString &fileName)
{
    const QStringList leftovers = m_file->leftoversOf(fileName);
    for (const QString &leftover : leftovers) {
        const QFileInfo file(leftover);
        const QString text = QStringLiteral("有上次保存失败时留下的内容：\n%1\n%2，%3字节\n"
                                            "确定载入它，取消则打开原文件。")
                                 .arg(QDir::toNativeSeparators(leftover),
                                      file.lastModified().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")))
                                 .arg(file.size());
        if (QtMessageBox::question(m_page, QString(), text) == 1)
            return leftover;
        m_file->decline(leftover);
    }
    return QString();
}

void HexFileSession::load(const QString &fileName, const QString &source, qint64 address)
{
    const qint64 size = FileStamp::of(source).size;
    if (size > kLargeFile &&
        QtMessageBox::question(m_page, QString(),
                               QStringLiteral("文件大小为%1 GB，打开需要同样多的内存，确定打开吗？")
                                   .arg(double(size) / double(1 << 30), 0, 'f', 1)) != 1)
        return;
    if (refuseWhileBusy())
        return;
    m_file->open(fileName, source, [this, source, address](const HexFile::Result &result) {
        endOpening(source, address, result);
    });
}

void HexFileSession::makeRoom()
{
    m_before = Shown{std::move(m_edit->document()), m_edit->address()};
    showDocument({});
    m_edit->setFocus();
}

void HexFileSession::showDocument(Shown shown)
{
    m_changeBar->hide();
    m_edit->setDocument(std::move(shown.document), shown.address);
    m_edit->setReadOnly(!m_file->isOpen(), QStringLiteral("请先打开文件"));
}

void HexFileSession::endOpening(const QString &source, qint64 address, const HexFile::Result &result)
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

void HexFileSession::showOutsideChange()
{
    const bool edited = m_edit->isModified();
    if (m_file->isGone())
        m_edit->setUnsaved(); // nothing else has these bytes
    m_changeBar->hide();
    if (m_file->isChangedOutside())
        m_changeBar->showChange(m_file->isGone(), edited);
}

void HexFileSession::reload()
{
    load(m_file->name(), m_file->name(), m_edit->address());
}

// Saving still asks before it overwrites the other program's bytes.
void HexFileSession::keepOurs()
{
    m_changeBar->hide();
    m_edit->setUnsaved();
    m_edit->setFocus();
}

// ---- saving

void HexFileSession::saveAs()
{
    const QString name = QtFileDialog::getSaveFileName(m_page, QStringLiteral("另存为"), m_file->name(),
                                                       QStringLiteral("所有文件(*.*)"));
    if (name.isEmpty() || refuseWhileBusy())
        return;
    if (m_file->isSame(name)) {
        save();
        return;
    }
    QApplication::setOverrideCursor(Qt::WaitCursor);
    m_file->saveAs(name, m_edit->document(), // the dialog has asked before it overwrites
                   [this, name](const HexFile::Result &result) { endSaving(name, result); });
}

// Calls next() once the bytes are on the disk.
void HexFileSession::saveAnd(const std::function<void()> &next)
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

bool HexFileSession::mayOverwrite()
{
    if (!m_file->needsConsent())
        return true;
    if (QtMessageBox::question(m_page, QStringLiteral("告警"),
                               QStringLiteral("文件打开之后已被其他程序修改，确定用当前内容覆盖吗？")) != 1)
        return false;
    m_file->giveConsent();
    return true;
}

void HexFileSession::endSaving(const QString &fileName, const HexFile::Result &result)
{
    QApplication::restoreOverrideCursor();
    if (result.inPlace) {
        m_changeBar->hide();
        m_edit->setSaved();
        m_recent->remember(fileName);
    }
    emit savingEnded();
    if (result.done) {
        QtMessageTip::showTip(QStringLiteral("  文件已保存  "), kTipMs);
        if (!result.consequence.isEmpty())
            emit notify(Notice::error(result.consequence));
        return;
    }
    if (result.reason.isEmpty()) {
        QtMessageTip::showTip(result.consequence, kTipMs);
        return;
    }
    emit notify(Notice::error(
        QStringLiteral("保存失败：%1。%2").arg(result.reason, result.consequence).simplified()));
    QtMessageBox::warning(m_page, QStringLiteral("QHexEdit"),
                          QStringLiteral("Cannot write file %1.\n原因：%2\n%3")
                              .arg(QDir::toNativeSeparators(fileName), result.reason, result.consequence));
}

// ---- closing

void HexFileSession::close()
{
    withoutEdits([this] {
        if (refuseWhileBusy())
            return;
        m_file->close();
        showDocument({});
    });
}

QtMessageBox::SaveAnswer HexFileSession::askAboutEdits()
{
    return QtMessageBox::saveQuestion(
        m_page, QString(),
        QStringLiteral("文件有未保存的修改，是否保存？\n%1").arg(QFileInfo(m_file->name()).fileName()));
}

// Calls next() once the edits are saved or discarded.
void HexFileSession::withoutEdits(const std::function<void()> &next)
{
    const auto answer = m_edit->isModified() ? askAboutEdits() : QtMessageBox::Discard;
    if (answer == QtMessageBox::Discard)
        next();
    else if (answer == QtMessageBox::Save)
        saveAnd(next);
}

// The user asked for the running save: closing waits for it.
bool HexFileSession::mayClose()
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

void HexFileSession::beginClosing()
{
    if (m_exit == Exit::Save && m_edit->isModified())
        beginExitSave();
}

void HexFileSession::beginExitSave()
{
    m_exit = Exit::SaveBegan;
    m_edit->task()->stop();
    save();
}

// At a log-off nothing was begun, and there is no time for the event loop.
bool HexFileSession::saveBeforeExit()
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
