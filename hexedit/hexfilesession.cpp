#include "hexfilesession.h"

#include "discard.h"
#include "hexchangebar.h"
#include "heximagebar.h"
#include "hexrecentbutton.h"
#include "hexrecordoutput.h"
#include "hexsaveform.h"
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
constexpr int kLongTipMs = 5000;            // more to read
constexpr qint64 kLargeDocument = 16 << 20; // takes long to give back
constexpr qint64 kLargeFile = qint64(4) << 30;
constexpr qint64 kLargeFill = 256 << 20;

} // namespace

HexFileSession::HexFileSession(QHexEdit *edit, HexRecentButton *recent, const Bars &bars, QWidget *page)
    : QObject(page)
    , m_edit(edit)
    , m_recent(recent)
    , m_changeBar(bars.change)
    , m_imageBar(bars.image)
    , m_page(page)
    , m_file(new HexFile(edit->task(), HexSaver::realDisk(), this))
{
    connect(m_file, &HexFile::readingBegan, this, &HexFileSession::makeRoom);
    connect(m_file, &HexFile::blockRead, m_edit, &QHexEdit::appendData);
    connect(m_file, &HexFile::changedOutside, this, &HexFileSession::showOutsideChange);
    connect(m_changeBar, &HexChangeBar::keepWanted, this, &HexFileSession::keepOurs);
    connect(m_imageBar, &HexImageBar::bytesWanted, this, [this] { openAs(HexFile::As::Bytes); });
    connect(m_imageBar, &HexImageBar::addressesWanted, this, [this] { openAs(HexFile::As::Content); });
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

QString HexFileSession::title() const
{
    if (m_file->isOpen())
        return QFileInfo(m_file->name()).fileName();
    return m_isNew ? QStringLiteral("未命名") : QString();
}

// ---- opening

// Typing must add bytes: there are none to overwrite.
void HexFileSession::makeNew()
{
    withoutEdits([this] {
        if (refuseWhileBusy())
            return;
        m_file->close();
        m_isNew = true;
        showDocument({});
        restoreMode();
        m_overwriteBefore = m_edit->isOverwrite();
        m_edit->setOverwrite(false);
        m_edit->setFocus();
        emit opened();
    });
}

// Other files are edited as before.
void HexFileSession::restoreMode()
{
    if (const auto overwrite = std::exchange(m_overwriteBefore, std::nullopt))
        m_edit->setOverwrite(*overwrite);
}

void HexFileSession::chooseFile()
{
    const QString name = QtFileDialog::getOpenFileName(
        m_page, QStringLiteral("打开文件"), QString(),
        QStringLiteral("固件和数据(*.bin *.img *.rom *.dat *.hex *.ihex *.s19 *.srec *.mot);;所有文件(*)"));
    if (!name.isEmpty())
        open(name);
}

void HexFileSession::open(const QString &fileName)
{
    if (refuseWhileBusy())
        return;
    withoutEdits([this, fileName] {
        const QString leftover = chosenLeftover(fileName);
        load(fileName, {leftover.isEmpty() ? fileName : leftover});
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

// The same file in the other way.
void HexFileSession::openAs(HexFile::As as)
{
    if (refuseWhileBusy())
        return;
    withoutEdits([this, as] { load(m_file->name(), {m_file->name(), as}); });
}

void HexFileSession::load(const QString &fileName, const Opening &opening)
{
    const qint64 size = FileStamp::of(opening.source).size;
    if (size > kLargeFile &&
        QtMessageBox::question(m_page, QString(),
                               QStringLiteral("文件大小为%1 GB，打开需要同样多的内存，确定打开吗？")
                                   .arg(double(size) / double(1 << 30), 0, 'f', 1)) != 1)
        return;
    if (refuseWhileBusy())
        return;
    m_file->open(
        fileName, opening.source,
        [this, opening](const HexFile::Result &result) { endOpening(opening, result); }, opening.as);
}

void HexFileSession::makeRoom()
{
    m_before = Shown{std::move(m_edit->document()), m_edit->addresses(), m_edit->address()};
    showDocument({});
    m_edit->setFocus();
}

void HexFileSession::showDocument(Shown shown)
{
    m_changeBar->hide();
    m_edit->setDocument(std::move(shown.document), shown.offset);
    m_edit->setAddresses(std::move(shown.addresses));
    showImage();
    m_edit->setReadOnly(!isOpen(), QStringLiteral("请先打开文件"));
}

void HexFileSession::showImage()
{
    m_imageBar->showFile(m_file->image(), m_file->contentForm(), m_edit->addresses(), m_edit->size());
}

void HexFileSession::endOpening(const Opening &opening, const HexFile::Result &result)
{
    auto before = std::exchange(m_before, std::nullopt);
    if (result.done) {
        m_recent->remember(m_file->name());
        m_isNew = false;
        restoreMode();
        m_as = opening.as;
        m_acceptsLoss = false;
        m_edit->setAddresses(m_file->image().form == HexForm::Bytes ? HexAddressMap(opening.firstAddress)
                                                                    : HexAddressMap(m_file->takeRuns()));
        showImage();
        const auto offset = m_edit->addresses().offsetOf(opening.address, m_edit->size());
        if (offset.value_or(0) > 0)
            m_edit->goTo(*offset);
        if (!result.inPlace)
            m_edit->setUnsaved();
        if (!result.consequence.isEmpty())
            QtMessageTip::showTip(result.consequence, kLongTipMs);
        if (before && before->document.size() > kLargeDocument)
            discardBeside(std::move(before->document));
        emit opened();
        return;
    }
    const bool isGone = !before && m_recent->forgetIfGone(opening.source);
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
    const HexAddressMap &addresses = m_edit->addresses();
    load(m_file->name(), {m_file->name(), m_as, addresses.isFixed() ? 0 : addresses.firstAddress(),
                          m_edit->shownAddress(m_edit->address())});
}

// Saving still asks before it overwrites the other program's bytes.
void HexFileSession::keepOurs()
{
    m_changeBar->hide();
    m_edit->setUnsaved();
    m_edit->setFocus();
}

// ---- saving

std::optional<HexFileSession::Target> HexFileSession::chosenTarget()
{
    const QString filters = HexSaveForm::filters(m_file->image());
    QString filter = filters.section(QStringLiteral(";;"), 0, 0);
    const QString name =
        QtFileDialog::getSaveFileName(m_page, QStringLiteral("另存为"), m_file->name(), filters, &filter);
    if (name.isEmpty() || refuseWhileBusy())
        return std::nullopt;
    const auto image = chosenImage(name, filter);
    if (!image || refuseWhileBusy())
        return std::nullopt;
    return Target{name, *image};
}

void HexFileSession::saveAsAnd(const std::function<void()> &next)
{
    const auto target = chosenTarget();
    if (!target)
        return;
    if (m_file->isOpen() && m_file->isSame(target->fileName) && target->image.form == m_file->image().form)
        saveAnd(next);
    else
        saveTo(*target, next);
}

void HexFileSession::saveTo(const Target &target, const std::function<void()> &next)
{
    prepareAnd([this, target, next] {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        m_file->saveAs(target.fileName, HexSaveForm::output(m_edit->document(), runs(), target.image),
                       target.image, // the dialog has asked before it overwrites
                       [this, name = target.fileName, next](const HexFile::Result &result) {
                           endSaving(name, result);
                           if (result.inPlace)
                               emit renamed();
                           if (result.done && next)
                               next();
                       });
    });
}

// Nothing else may begin between both.
void HexFileSession::prepareAnd(const std::function<void()> &save)
{
    m_isPreparing = true;
    const auto go = [this, save](bool maySave) {
        m_isPreparing = false;
        if (maySave)
            return save();
        QtMessageTip::showTip(QStringLiteral("已停止，文件未保存"), kTipMs);
        emit savingEnded();
    };
    if (m_prepare)
        m_prepare(go);
    else
        go(true);
}

HexRuns HexFileSession::runs() const
{
    return m_edit->addresses().runs(m_edit->size());
}

bool HexFileSession::refuseForm(const HexImage &image) const
{
    const QString reason = image.form == HexForm::Bytes ? QString() : HexRecordOutput::refusal(runs());
    if (!reason.isEmpty())
        QtMessageTip::showTip(QStringLiteral("未保存：") + reason, kLongTipMs);
    return !reason.isEmpty();
}

// Nothing where it can't be, or the user thinks better of it.
std::optional<HexImage> HexFileSession::chosenImage(const QString &fileName, const QString &filter)
{
    const HexImage image = HexSaveForm::imageFor(fileName, filter, m_file->image());
    if (refuseForm(image))
        return std::nullopt;
    QString question;
    const qint64 fill = image.form == HexForm::Bytes ? HexFilledOutput::fillSize(runs()) : 0;
    if (image.form != m_file->image().form && HexSaveForm::contradicts(fileName, image.form))
        question =
            QStringLiteral("所选格式与文件名的扩展名不符，仍以“%1”保存为%2吗？")
                .arg(QFileInfo(fileName).fileName(),
                     image.form == HexForm::Bytes ? QStringLiteral("原始数据") : HexForms::name(image.form));
    else if (fill > kLargeFill)
        question = QStringLiteral("各段数据之间要填充%1 MB，确定保存吗？").arg(fill >> 20);
    if (!question.isEmpty() && QtMessageBox::question(m_page, QString(), question) != 1)
        return std::nullopt;
    return image;
}

// Calls next() once the bytes are on the disk.
void HexFileSession::saveAnd(const std::function<void()> &next)
{
    if (!m_file->isOpen()) {
        saveAsAnd(next);
        return;
    }
    if (refuseWhileBusy() || refuseForm(m_file->image()) || !mayOverwrite() || refuseWhileBusy())
        return;
    prepareAnd([this, next] {
        if (!mayOverwrite()) { // another program has changed it meanwhile
            emit savingEnded();
            return;
        }
        QApplication::setOverrideCursor(Qt::WaitCursor);
        m_file->save(HexSaveForm::output(m_edit->document(), runs(), m_file->image()),
                     [this, next](const HexFile::Result &result) {
                         endSaving(m_file->name(), result);
                         if (result.done && next)
                             next();
                     });
    });
}

bool HexFileSession::mayOverwrite()
{
    const HexFaults &faults = m_file->image().faults;
    if (faults.losesOnSaving() && !m_acceptsLoss) {
        m_acceptsLoss = QtMessageBox::question(
                            m_page, QStringLiteral("告警"),
                            QStringLiteral("文件中有%1处问题，保存后只保留已载入的数据，校验和将重新计算。\n"
                                           "确定保存吗？")
                                .arg(faults.count())) == 1;
        if (!m_acceptsLoss)
            return false;
    }
    if (!m_file->needsConsent())
        return true;
    if (QtMessageBox::question(m_page, QStringLiteral("告警"),
                               QStringLiteral("文件打开之后已被其他程序修改，确定用当前内容覆盖吗？")) != 1)
        return false;
    m_file->giveConsent();
    return true;
}

// As it would be opened now, but that gaps which were filled stay gaps.
void HexFileSession::showSavedForm()
{
    if (m_file->image().form != HexForm::Bytes) {
        m_as = HexFile::As::Content;
        if (!m_edit->addresses().isFixed())
            m_edit->setAddresses(HexAddressMap(runs()));
    }
    showImage();
}

void HexFileSession::endSaving(const QString &fileName, const HexFile::Result &result)
{
    QApplication::restoreOverrideCursor();
    if (result.inPlace) {
        m_isNew = false;
        m_changeBar->hide();
        showSavedForm();
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
        m_isNew = false;
        showDocument({});
        restoreMode();
        emit opened();
    });
}

QtMessageBox::SaveAnswer HexFileSession::askAboutEdits()
{
    return QtMessageBox::saveQuestion(m_page, QString(),
                                      QStringLiteral("文件有未保存的修改，是否保存？\n%1").arg(title()));
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
    m_exit = isSaving() ? Exit::SaveBegan : Exit::Undecided;
    m_exitTarget.reset();
    if (m_exit == Exit::SaveBegan || !m_edit->isModified())
        return true;
    m_edit->task()->stop(); // saving needs bytes that keep still
    const QtMessageBox::SaveAnswer answer = askAboutEdits();
    if (answer != QtMessageBox::Cancel)
        m_exit = answer == QtMessageBox::Save ? Exit::Save : Exit::Discard;
    return answer == QtMessageBox::Discard || (answer == QtMessageBox::Save && maySaveAtExit());
}

// A new file needs its name while there can still be a question.
bool HexFileSession::maySaveAtExit()
{
    if (m_file->isOpen())
        return mayOverwrite();
    m_edit->task()->stop();
    m_exitTarget = chosenTarget();
    return m_exitTarget.has_value();
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
    const auto target = std::exchange(m_exitTarget, std::nullopt);
    if (!m_file->isOpen() && target)
        saveTo(*target, {});
    else
        save();
}

// At a log-off nothing was begun, and there is no time for the event loop.
bool HexFileSession::saveBeforeExit()
{
    if (m_edit->isModified() && m_exit == Exit::Undecided) { // edited after the question
        const QtMessageBox::SaveAnswer answer = askAboutEdits();
        if (answer == QtMessageBox::Cancel || (answer == QtMessageBox::Save && !maySaveAtExit()))
            return false;
        m_exit = answer == QtMessageBox::Save ? Exit::Save : Exit::Discard;
    }
    if (m_edit->isModified() && m_exit == Exit::Save)
        beginExitSave();
    while (isSaving() && m_edit->task()->isRunning())
        m_edit->task()->runToEnd();
    const bool isSaved = !m_edit->isModified();
    if (isSaved && m_exit == Exit::SaveBegan)
        m_exit = Exit::Save; // edits after a canceled log-off as well
    return isSaved || m_exit == Exit::Discard;
}
