#include "receivestore.h"

#include "apppaths.h"
#include "eventslices.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "qtterminalwidget.h"
#include "receivedfiles.h"
#include "settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QStandardPaths>

namespace {

const auto kTextFilter = QStringLiteral("文本文件(*.txt)");
const auto kBytesFilter = QStringLiteral("数据文件(*.bin)");
const auto kQuestion = QStringLiteral("询问");
const auto kUnsaved = QStringLiteral("当前有数据未保存，是否保存接收数据?");

} // namespace

ReceiveStore::ReceiveStore(QtTerminalWidget *terminal, const QString &stem, QWidget *page)
    : QObject(page)
    , m_terminal(terminal)
    , m_page(page)
    , m_spool(AppPaths::tmpFolder(), stem)
{
}

void ReceiveStore::add(const QByteArray &bytes)
{
    m_unsaved = true;
    m_spool.append(bytes.constData(), bytes.size());
}

void ReceiveStore::flush()
{
    const ByteSpool::State state = m_spool.flush();
    if (state == m_reportedState)
        return;
    m_reportedState = state;
    switch (state) {
    case ByteSpool::State::OnDisk:
        emit notify(Notice::information(QStringLiteral("缓存文件恢复写入，接收数据没有丢失")));
        break;
    case ByteSpool::State::InMemory:
        emit notify(Notice::error(QStringLiteral("无法写入缓存文件，接收数据暂存于内存，请检查磁盘空间！")));
        break;
    case ByteSpool::State::Incomplete:
        emit notify(Notice::error(QStringLiteral("无法写入缓存文件，后续数据将无法保存为数据文件！")));
        break;
    }
}

void ReceiveStore::clear()
{
    m_terminal->clearTerminal();
    m_unsaved = false;
    m_hidden = false;
}

bool ReceiveStore::isEmpty() const
{
    return m_spool.size() == 0;
}

bool ReceiveStore::save()
{
    if (!isEmpty()) {
        const Target target = askForFile();
        return !target.name.isEmpty() && writeTo(target);
    }
    emit notify(Notice::information(QStringLiteral("当前无数据需要保存！")));
    return false;
}

ReceiveStore::Target ReceiveStore::askForFile()
{
    // Without text shown, a text file would be an empty one.
    const bool noText = m_terminal->received().isEmpty();
    const QString filters = noText ? kBytesFilter : kTextFilter + QStringLiteral(";;") + kBytesFilter;
    QString filter = noText || m_hidden ? kBytesFilter : kTextFilter;
    const QString name = QtFileDialog::getSaveFileName(m_page, QString(), QString(), filters, &filter);
    const auto isNamed = [&name](const QString &suffix) {
        return name.endsWith(suffix, Qt::CaseInsensitive);
    };
    const bool asText =
        !isNamed(QStringLiteral(".bin")) && (filter == kTextFilter || isNamed(QStringLiteral(".txt")));
    return {name, noText || !asText};
}

bool ReceiveStore::writeTo(const Target &target)
{
    m_unsaved = false; // again by what arrives meanwhile, which is not in the file
    QString error;
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const bool saved = target.asBytes ? writeBytes(target.name, &error) : writeText(target.name, &error);
    QGuiApplication::restoreOverrideCursor();
    const bool complete = target.asBytes ? m_spool.state() != ByteSpool::State::Incomplete
                                         : m_terminal->received().isRecordComplete();
    if (!saved) {
        m_unsaved = true;
        reportFailure(target.name, error);
    } else if (!complete) {
        emit notify(Notice::error(QStringLiteral("文件保存完成，但因磁盘空间不足部分数据已丢失！")));
    } else if (m_hidden) {
        m_unsaved = true;
        emit notify(Notice::information(
            QStringLiteral("文件保存完成，不含“停止显示”期间的数据；保存为数据文件(*.bin)可保留全部数据")));
    } else {
        emit notify(Notice::information(QStringLiteral("文件保存完成!")));
    }
    return saved;
}

// What is pending for display at this moment is part of the text; what arrives
// meanwhile is not.
void ReceiveStore::showPending()
{
    EventSlices events;
    while (m_terminal->received().isMadeAgain()) {
        m_terminal->flushSlice();
        events.runIfDue();
    }
    qint64 pending = m_terminal->queuedBytes();
    for (qint64 due = pending; due > 0 && pending > 0;) {
        m_terminal->flushSlice();
        due -= pending - m_terminal->queuedBytes();
        events.runIfDue();
        pending = m_terminal->queuedBytes();
    }
}

bool ReceiveStore::writeText(const QString &name, QString *error)
{
    showPending();
    const LineStamp stamp = m_terminal->stamp();
    return ReceivedFiles::saveText(m_terminal->received(), m_terminal->view().savesStamps ? &stamp : nullptr,
                                   name, Settings::instance().textCodec, error);
}

void ReceiveStore::reportFailure(const QString &name, const QString &error)
{
    emit notify(Notice::error(QStringLiteral("文件保存失败!")));
    emit notify(Notice::error(QStringLiteral("无法写入“%1”：%2").arg(QFileInfo(name).fileName(), error)));
}

// All data is as unsaved as before.
void ReceiveStore::savePart(const std::function<bool(const QString &, int, QString *)> &write)
{
    const QString name = QtFileDialog::getSaveFileName(m_page, QString(), QString(), kTextFilter);
    if (name.isEmpty())
        return;
    QString error;
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const bool saved = write(name, Settings::instance().textCodec, &error);
    QGuiApplication::restoreOverrideCursor();
    if (saved)
        emit notify(Notice::information(QStringLiteral("文件保存完成!")));
    else
        reportFailure(name, error);
}

void ReceiveStore::saveSelected()
{
    const QString text = m_terminal->selectedText(m_terminal->view().savesStamps);
    savePart([&text](const QString &name, int codec, QString *error) {
        return ReceivedFiles::saveText(text, name, codec, error);
    });
}

void ReceiveStore::saveFiltered()
{
    if (!m_terminal->filter())
        return;
    showPending();
    const LineStamp stamp = m_terminal->stamp();
    const LineStamp *added = m_terminal->view().savesStamps ? &stamp : nullptr;
    savePart([&](const QString &name, int codec, QString *error) {
        const LineStore &lines = m_terminal->received().lines();
        const qint64 end = lines.completeLines();
        EventSlices events;
        while (m_terminal->filter() && m_terminal->filter()->nextLine() < qMin(end, lines.completeLines()))
            events.wait();
        if (const LineFilter *filter = m_terminal->filter())
            return ReceivedFiles::saveLines(lines, LineSet(filter->lines()), added, name, codec, error);
        *error = QStringLiteral("保存期间不再只看匹配行");
        return false;
    });
}

bool ReceiveStore::writeBytes(const QString &name, QString *error)
{
    const qint64 size = m_spool.size();
    const bool wasHidden = std::exchange(m_hidden, false); // again by what arrives meanwhile
    if (ReceivedFiles::saveBytes(m_spool, name, error)) {
        m_bytesSaved = size;
        return true;
    }
    m_hidden = m_hidden || wasHidden;
    return false;
}

// To dated files: the bytes of the session, which text can't reproduce, and the
// text shown.
bool ReceiveStore::saveTo(const QString &folder, QString *error)
{
    if (folder.isEmpty() || !QDir().mkpath(folder)) {
        *error = QStringLiteral("无法创建文件夹");
        return false;
    }
    const QString text = QStringLiteral(".txt");
    const QString bytes = QStringLiteral(".bin");
    const QString name = ReceivedFiles::reserveDatedName(folder, {bytes, text});
    const bool wasUnsaved = std::exchange(m_unsaved, false);
    if (!writeBytes(name + bytes, error)) {
        QFile::remove(name + bytes); // only reserved
    } else if (!wasUnsaved || m_terminal->received().isEmpty() || writeText(name + text, error)) {
        return true;
    }
    m_unsaved = m_unsaved || wasUnsaved;
    return false;
}

// Or in the user's documents, where the program's folder cannot be written.
bool ReceiveStore::saveBesideProgram(QString *error)
{
    return saveTo(AppPaths::root() + QStringLiteral("/save"), error) ||
           saveTo(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation), error);
}

bool ReceiveStore::mayClose()
{
    m_atExit = AtExit::Unasked;
    return Settings::instance().closeBehaviour != Settings::Ask || !m_unsaved || askAtExit(kUnsaved);
}

bool ReceiveStore::askAtExit(const QString &question)
{
    switch (QtMessageBox::saveQuestion(m_page, kQuestion, question)) {
    case QtMessageBox::Save:
        m_exitFile = askForFile();
        m_atExit = AtExit::Save;
        return !m_exitFile.name.isEmpty();
    case QtMessageBox::Discard:
        m_atExit = AtExit::Discard;
        return true;
    default:
        return false;
    }
}

bool ReceiveStore::saveBeforeExit()
{
    switch (Settings::instance().closeBehaviour) {
    case Settings::Ask:
        if (!m_unsaved)
            return true;
        if (m_atExit == AtExit::Unasked && !askAtExit(kUnsaved))
            return false;
        return m_atExit == AtExit::Discard || writeTo(m_exitFile);
    case Settings::AutoSave:
        return autoSave();
    default:
        return true;
    }
}

// Also where the display was cleared or saved as text: the bytes are in no file
// then.
bool ReceiveStore::autoSave()
{
    QString error;
    if (m_spool.size() <= m_bytesSaved && !m_unsaved)
        return true;
    if (saveBesideProgram(&error))
        return true;
    if (!askAtExit(QStringLiteral("接收数据自动保存失败：%1。是否保存到其他位置？").arg(error)))
        return false;
    return m_atExit == AtExit::Discard || writeTo(m_exitFile);
}
