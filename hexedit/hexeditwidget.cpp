#include "hexedit/hexeditwidget.h"

#include "app/settings.h"
#include "app/settingskeys.h"
#include "hexedit/qhexedit.h"
#include "shell/base/qtfiledialog.h"
#include "shell/base/qtmessagebox.h"
#include "shell/base/qtmessagetip.h"

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

constexpr int kMostRecent = 10;
constexpr int kTipMs = 2000;
constexpr int kLongTipMs = 5000; // more to read
constexpr qint64 kLargeFile = qint64(4) << 30;
constexpr qint64 kWriteSlice = 4 << 20;

QString onlyFileOf(const QMimeData *data)
{
    const QList<QUrl> urls = data->urls();
    return urls.size() == 1 ? urls.first().toLocalFile() : QString();
}

} // namespace

HexEditWidget::HexEditWidget(QWidget *parent)
    : QtWidgetBase(parent)
{
    setObjectName(QStringLiteral("HexEditWidget"));
    setAcceptDrops(true);
    buildUi();
    connectParts();
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

QStringList HexEditWidget::counts() const
{
    return {QStringLiteral("Address: %1").arg(m_address), QStringLiteral("Size: %1").arg(m_size)};
}

bool HexEditWidget::mayClose()
{
    return !m_saving && mayDiscard(QStringLiteral("文件有未保存的修改，确定放弃修改并退出吗?"));
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
    default:
        break;
    }
}

bool HexEditWidget::refuseWhileBusy() const
{
    if (m_saving)
        QtMessageTip::showTip(QStringLiteral("正在保存，请等待完成"), kTipMs);
    return m_saving || m_edit->refuseWhileBusy();
}

// ---- opening and closing

HexEditWidget::Stamp HexEditWidget::Stamp::of(const QString &fileName)
{
    const QFileInfo file(HexSaver::targetOf(fileName));
    return {file.exists(), file.size(), file.lastModified()};
}

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
    if (refuseWhileBusy() || !mayDiscard(QStringLiteral("文件有未保存的修改，确定放弃修改并打开其他文件吗?")))
        return;
    const Stamp stamp = Stamp::of(fileName);
    const auto reader = std::make_shared<HexReader>();
    if (!reader->open(fileName)) {
        if (forgetIfGone(fileName))
            QtMessageTip::showTip(QStringLiteral("打开文件失败! 文件已不存在，不再列入最近打开"), kLongTipMs);
        else
            QtMessageTip::showTip(QStringLiteral("打开文件失败!"), kTipMs);
        return;
    }
    if (stamp.size > kLargeFile &&
        QtMessageBox::question(this, QString(),
                               QStringLiteral("文件大小为%1 GB，打开需要同样多的内存，确定打开吗?")
                                   .arg(double(stamp.size) / double(1 << 30), 0, 'f', 1)) != 1)
        return;
    const auto before = std::make_shared<Opened>(
        Opened{m_fileName, m_stamp, std::move(m_edit->document()), m_edit->address()});
    showFile({fileName, stamp, HexDocument(), 0});
    m_edit->setFocus();
    const auto state = std::make_shared<HexReader::State>(HexReader::State::Running);
    m_edit->task()->start({QStringLiteral("正在打开"),
                           [this, reader, state] {
                               QByteArray block;
                               *state = reader->step(&block);
                               if (*state == HexReader::State::Running)
                                   m_edit->appendData(block);
                               return *state != HexReader::State::Running;
                           },
                           [reader] { return reader->permille(); },
                           [this, state, before](bool) { finishOpening(*state, before); }});
}

void HexEditWidget::showFile(Opened opened)
{
    m_fileName = opened.fileName;
    m_stamp = opened.stamp;
    m_edit->setDocument(std::move(opened.document), opened.address);
    m_edit->setReadOnly(m_fileName.isEmpty(), QStringLiteral("请先打开文件"));
}

void HexEditWidget::finishOpening(HexReader::State state, const std::shared_ptr<Opened> &before)
{
    if (state == HexReader::State::Done) {
        remember(m_fileName);
        if (!(Stamp::of(m_fileName) == m_stamp))
            QtMessageTip::showTip(
                QStringLiteral("文件在打开期间已被其他程序修改，内容可能不完整，请重新打开"), kLongTipMs);
        return;
    }
    showFile(std::move(*before));
    if (state == HexReader::State::Failed)
        QtMessageTip::showTip(QStringLiteral("打开文件失败!"), kTipMs);
    else if (state == HexReader::State::OutOfMemory)
        QtMessageTip::showTip(QStringLiteral("打开文件失败! 内存不足"), kLongTipMs);
}

void HexEditWidget::remember(const QString &fileName)
{
    QStringList names = Settings::instance().recentFiles;
    const QString name = QFileInfo(fileName).absoluteFilePath();
    names.removeAll(name);
    names.prepend(name);
    setRecent(names.mid(0, kMostRecent));
}

bool HexEditWidget::forgetIfGone(const QString &fileName)
{
    QStringList names = Settings::instance().recentFiles;
    if (QFileInfo::exists(fileName) || names.removeAll(fileName) == 0)
        return false;
    setRecent(names);
    return true;
}

void HexEditWidget::setRecent(const QStringList &names)
{
    Settings::instance().recentFiles = names;
    Settings::writeValue(SettingsKeys::HexEdit::group, SettingsKeys::HexEdit::recentFiles, names);
}

void HexEditWidget::closeFile()
{
    if (!mayDiscard(QStringLiteral("文件有未保存的修改，确定放弃修改并关闭吗?")))
        return;
    showFile(Opened());
}

bool HexEditWidget::mayDiscard(const QString &question)
{
    return !m_edit->isModified() || QtMessageBox::question(this, QString(), question) == 1;
}

void HexEditWidget::dragEnterEvent(QDragEnterEvent *event)
{
    if (!onlyFileOf(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void HexEditWidget::dropEvent(QDropEvent *event)
{
    event->acceptProposedAction();
    // The question must not keep the program waiting that the file comes from.
    const QString name = onlyFileOf(event->mimeData());
    QTimer::singleShot(0, this, [this, name] { openFile(name); });
}

// ---- saving

void HexEditWidget::save()
{
    if (m_fileName.isEmpty()) {
        QtMessageTip::showTip(QStringLiteral("请先打开文件"), kTipMs);
        return;
    }
    if (!mayOverwrite())
        return;
    m_saving = true;
    m_savedBytes = 0;
    m_edit->setReadOnly(true);
    showWork(QStringLiteral("正在保存"));
    m_stop->hide(); // half of a save is none
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const HexSaver::Outcome outcome =
        m_saver.save(m_fileName, m_edit->size(), [this](QIODevice &device) { return writeTo(device); });
    QApplication::restoreOverrideCursor();
    endWork();
    m_saving = false;
    m_edit->setReadOnly(false);
    if (outcome.inPlace) {
        m_stamp = Stamp::of(m_fileName);
        m_edit->setSaved();
    }
    showOutcome(outcome);
}

bool HexEditWidget::mayOverwrite()
{
    const Stamp now = Stamp::of(m_fileName);
    return !now.exists || now == m_stamp ||
           QtMessageBox::question(this, QStringLiteral("告警"),
                                  QStringLiteral("文件打开之后已被其他程序修改，确定用当前内容覆盖吗?")) == 1;
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

void HexEditWidget::showOutcome(const HexSaver::Outcome &outcome)
{
    if (outcome.saved) {
        QtMessageTip::showTip(QStringLiteral("  文件已保存  "), kTipMs);
        return;
    }
    QString text = QStringLiteral("Cannot write file %1.").arg(QDir::toNativeSeparators(m_fileName));
    if (!outcome.kept.isEmpty())
        text += QLatin1Char('\n') + outcome.kept;
    m_selectionLabel->setText(QStringLiteral("保存失败: %1").arg(outcome.reason));
    m_selectionLabel->setToolTip(outcome.reason);
    QtMessageBox::warning(this, QStringLiteral("QHexEdit"), text);
}
