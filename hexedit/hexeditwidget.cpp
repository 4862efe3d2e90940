#include "hexeditwidget.h"

#include "hexchangebar.h"
#include "hexrecentbutton.h"
#include "qhexedit.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"

#include <QApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QUrl>
#include <utility>

namespace {

constexpr int kTipMs = 2000;
constexpr int kLongTipMs = 5000; // more to read
constexpr qint64 kLargeFile = qint64(4) << 30;
constexpr qint64 kWriteSlice = 4 << 20;

QString onlyFileOf(const QMimeData *data)
{
    const QList<QUrl> urls = data->urls();
    return urls.size() == 1 ? urls.first().toLocalFile() : QString();
}

void tellNotOpened(const QString &why)
{
    QtMessageTip::showTip(QStringLiteral("打开文件失败! ") + why, kLongTipMs);
}

// A copy is what we make of a file: after a move, its program would delete it.
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
    , m_watch(this)
{
    setObjectName(QStringLiteral("HexEditWidget"));
    setAcceptDrops(true);
    buildUi();
    connectParts();
    connect(&m_watch, &HexFileWatch::changed, this, &HexEditWidget::showOutsideChange);
    m_saver.pause = [this](qint64 bytes) { pause(bytes); };
    endWork();
    reloadCodec();
    setAddress(0);
    setSize(0);
    showState();
}

HexEditWidget::~HexEditWidget()
{
    m_edit->task()->disconnect(this);
    m_edit->disconnect(this);
}

bool HexEditWidget::mayClose()
{
    if (m_saving) {
        QtMessageTip::showTip(QStringLiteral("正在保存，请等待完成"), kTipMs);
        return false;
    }
    m_exitAnswer.reset();
    if (!m_edit->isModified())
        return true;
    m_edit->task()->stop(); // saving needs bytes that keep still
    m_exitAnswer = askAboutEdits();
    return m_exitAnswer != QtMessageBox::Cancel;
}

bool HexEditWidget::saveBeforeExit()
{
    if (!m_edit->isModified() || m_exitAnswer == QtMessageBox::Discard)
        return true;
    return m_exitAnswer == QtMessageBox::Save ? save() : mayDiscard(); // edited after the question
}

void HexEditWidget::sltToolBtnsClicked(int id)
{
    if (refuseWhileBusy())
        return;
    switch (id) {
    case OpenFile:
        chooseFile();
        break;
    case SaveFile:
        save();
        break;
    case Undo:
        m_edit->undo();
        break;
    case Redo:
        m_edit->redo();
        break;
    case CloseFile:
        closeFile();
        break;
    }
}

bool HexEditWidget::refuseWhileBusy() const
{
    if (m_saving)
        QtMessageTip::showTip(QStringLiteral("正在保存，请等待完成"), kTipMs);
    return m_saving || m_edit->refuseWhileBusy();
}

bool HexEditWidget::refuseWithoutFile() const
{
    if (m_fileName.isEmpty())
        QtMessageTip::showTip(QStringLiteral("请先打开文件"), kTipMs);
    return m_fileName.isEmpty();
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
    if (refuseWhileBusy() || !mayDiscard())
        return;
    const QString leftover = chosenLeftover(fileName);
    load(fileName, leftover.isEmpty() ? fileName : leftover, 0);
}

// Where a save failed, the bytes may be beside the file, or instead of it.
QString HexEditWidget::chosenLeftover(const QString &fileName)
{
    const QStringList leftovers = HexSaver::leftoversOf(fileName);
    for (const QString &leftover : leftovers) {
        const QFileInfo file(leftover);
        const QString time = file.lastModified().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
        const QString key = leftover + time;
        if (m_declined.contains(key))
            continue;
        if (QtMessageBox::question(
                this, QString(),
                QStringLiteral("有上次保存失败时留下的内容：\n%1\n%2，%3字节\n确定载入它，取消则打开原文件。")
                    .arg(QDir::toNativeSeparators(leftover), time)
                    .arg(file.size())) == 1)
            return leftover;
        m_declined.insert(key);
    }
    return QString();
}

void HexEditWidget::load(const QString &fileName, const QString &source, qint64 address)
{
    const auto loading = std::make_shared<Loading>();
    const FileStamp stamp = FileStamp::of(fileName);
    loading->source = source;
    loading->sourceStamp = FileStamp::of(source);
    loading->address = address;
    if (!loading->reader.open(source)) {
        if (m_recent->forgetIfGone(source))
            QtMessageTip::showTip(QStringLiteral("打开文件失败! 文件已不存在，不再列入最近打开"), kLongTipMs);
        else
            tellNotOpened(loading->reader.reason());
        return;
    }
    if (loading->sourceStamp.size > kLargeFile &&
        QtMessageBox::question(this, QString(),
                               QStringLiteral("文件大小为%1 GB，打开需要同样多的内存，确定打开吗？")
                                   .arg(double(loading->sourceStamp.size) / double(1 << 30), 0, 'f', 1)) != 1)
        return;
    loading->before = {m_fileName, m_watch.stamp(), std::move(m_edit->document()), m_edit->address()};
    showFile({fileName, stamp, HexDocument(), 0});
    m_edit->setFocus();
    m_edit->task()->start({QStringLiteral("正在打开"),
                           [this, loading] {
                               QByteArray block;
                               loading->state = loading->reader.step(&block);
                               if (loading->state == HexReader::State::Running)
                                   m_edit->appendData(block);
                               return loading->state != HexReader::State::Running;
                           },
                           [loading] { return loading->reader.permille(); },
                           [this, loading](bool) { finishOpening(*loading); }});
}

void HexEditWidget::showFile(Opened opened)
{
    m_fileName = opened.fileName;
    m_watch.follow(opened.fileName, opened.stamp);
    m_changeBar->hide();
    m_edit->setDocument(std::move(opened.document), opened.address);
    m_edit->setReadOnly(m_fileName.isEmpty(), QStringLiteral("请先打开文件"));
}

void HexEditWidget::finishOpening(Loading &loading)
{
    if (loading.state == HexReader::State::Done) {
        m_recent->remember(m_fileName);
        if (loading.address > 0)
            m_edit->goTo(loading.address);
        if (!(FileStamp::of(loading.source) == loading.sourceStamp))
            QtMessageTip::showTip(
                QStringLiteral("文件在打开期间已被其他程序修改，内容可能不完整，请重新打开"), kLongTipMs);
        if (loading.source != m_fileName) {
            m_edit->setUnsaved();
            QtMessageTip::showTip(QStringLiteral("已载入上次保存失败时留下的内容，保存后写入原文件"),
                                  kLongTipMs);
        }
        return;
    }
    showFile(std::move(loading.before));
    m_watch.check();
    if (loading.state == HexReader::State::Failed)
        tellNotOpened(loading.reader.reason());
    else if (loading.state == HexReader::State::OutOfMemory)
        tellNotOpened(QStringLiteral("内存不足"));
}

// ---- changes by other programs

void HexEditWidget::showOutsideChange()
{
    const bool edited = m_edit->isModified();
    if (m_watch.isGone())
        m_edit->setUnsaved(); // nothing else has these bytes
    m_changeBar->hide();
    if (m_watch.differs())
        m_changeBar->showChange(m_watch.isGone(), edited);
}

void HexEditWidget::reload()
{
    if (!refuseWhileBusy())
        load(m_fileName, m_fileName, m_edit->address());
}

// Saving still asks before it overwrites what the other program has written.
void HexEditWidget::keepOurs()
{
    m_watch.acknowledge();
    m_changeBar->hide();
    m_edit->setUnsaved();
    m_edit->setFocus();
}

// ---- closing

void HexEditWidget::closeFile()
{
    if (mayDiscard())
        showFile(Opened());
}

QtMessageBox::SaveAnswer HexEditWidget::askAboutEdits()
{
    return QtMessageBox::saveQuestion(
        this, QString(),
        QStringLiteral("文件有未保存的修改，是否保存？\n%1").arg(QFileInfo(m_fileName).fileName()));
}

bool HexEditWidget::mayDiscard()
{
    if (!m_edit->isModified())
        return true;
    const QtMessageBox::SaveAnswer answer = askAboutEdits();
    return answer == QtMessageBox::Discard || (answer == QtMessageBox::Save && save());
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
    // The question must not keep the program waiting that the file comes from.
    const QString name = onlyFileOf(event->mimeData());
    QTimer::singleShot(0, this, [this, name] { openFile(name); });
}

// ---- saving

bool HexEditWidget::save()
{
    return !refuseWithoutFile() && mayOverwrite() && saveTo(m_fileName);
}

void HexEditWidget::saveAs()
{
    if (refuseWhileBusy() || refuseWithoutFile())
        return;
    const QString name = QtFileDialog::getSaveFileName(this, QStringLiteral("另存为"), m_fileName,
                                                       QStringLiteral("所有文件(*.*)"));
    if (name.isEmpty())
        return;
    if (HexSaver::targetOf(name) == HexSaver::targetOf(m_fileName)) {
        save();
    } else {
        HexSaver::setLeftoverAside(name);
        saveTo(name); // the dialog has asked before it overwrites
    }
}

bool HexEditWidget::saveTo(const QString &fileName)
{
    m_saving = true;
    m_savedBytes = 0;
    m_watch.setPaused(true);
    m_edit->setReadOnly(true);
    showWork(QStringLiteral("正在保存"));
    m_stop->hide(); // half of a save is none
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const HexSaver::Outcome outcome =
        m_saver.save(fileName, m_edit->size(), [this](QIODevice &device) { return writeTo(device); });
    QApplication::restoreOverrideCursor();
    endWork();
    m_saving = false;
    m_watch.setPaused(false);
    m_edit->setReadOnly(false);
    if (outcome.inPlace) {
        m_fileName = fileName;
        m_watch.follow(fileName, FileStamp::of(fileName));
        m_changeBar->hide();
        m_edit->setSaved();
        m_recent->remember(fileName);
    } else if (fileName == m_fileName) {
        m_watch.acknowledge(); // what a failed save moved, the box tells
    }
    showOutcome(outcome, fileName);
    return outcome.saved;
}

bool HexEditWidget::mayOverwrite()
{
    const FileStamp now = FileStamp::of(m_fileName);
    return !now.exists || now == m_watch.stamp() ||
           QtMessageBox::question(this, QStringLiteral("告警"),
                                  QStringLiteral("文件打开之后已被其他程序修改，确定用当前内容覆盖吗？")) ==
               1;
}

bool HexEditWidget::writeTo(QIODevice &device)
{
    const qint64 size = m_edit->size();
    for (qint64 at = 0; at < size; at += kWriteSlice) {
        if (!m_edit->write(device, at, kWriteSlice))
            return false;
        pause(kWriteSlice);
    }
    return true;
}

// The window goes on drawing and the other tools go on receiving; the user's
// hand has to wait.
void HexEditWidget::pause(qint64 bytes)
{
    // All is written twice: into the temporary file and from there.
    m_savedBytes += bytes;
    m_progress->setValue(
        static_cast<int>(qMin<qint64>(1000, m_savedBytes * 500 / qMax<qint64>(m_edit->size(), 1))));
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void HexEditWidget::showOutcome(const HexSaver::Outcome &outcome, const QString &fileName)
{
    if (outcome.saved) {
        QtMessageTip::showTip(QStringLiteral("  文件已保存  "), kTipMs);
        if (!outcome.consequence.isEmpty())
            notify(Notice::error(outcome.consequence));
        return;
    }
    notify(Notice::error(
        QStringLiteral("保存失败：%1。%2").arg(outcome.reason, outcome.consequence).simplified()));
    QtMessageBox::warning(this, QStringLiteral("QHexEdit"),
                          QStringLiteral("Cannot write file %1.\n原因：%2\n%3")
                              .arg(QDir::toNativeSeparators(fileName), outcome.reason, outcome.consequence));
}
