#include "serial/receivestore.h"

#include "app/apppaths.h"
#include "app/settings.h"
#include "serial/qtterminalwidget.h"
#include "serial/receivedfiles.h"
#include "shell/base/qtfiledialog.h"
#include "shell/base/qtmessagebox.h"

#include <QDir>
#include <QGuiApplication>
#include <QStandardPaths>

namespace {

constexpr int kInformation = 0;
constexpr int kError = 255;

const auto kTextFilter = QStringLiteral("文本文件(*.txt)");
const auto kBytesFilter = QStringLiteral("数据文件(*.bin)");
const auto kQuestion = QStringLiteral("询问");

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

// Tells once when the disk refuses what came, and when it takes it again.
void ReceiveStore::flush()
{
    const ByteSpool::State state = m_spool.flush();
    if (state == m_stateTold)
        return;
    m_stateTold = state;
    switch (state) {
    case ByteSpool::State::OnDisk:
        emit notify(QStringLiteral("缓存文件恢复写入，接收数据没有丢失"), kInformation);
        break;
    case ByteSpool::State::InMemory:
        emit notify(QStringLiteral("无法写入缓存文件，接收数据暂存于内存，请检查磁盘空间！"), kError);
        break;
    case ByteSpool::State::Incomplete:
        emit notify(QStringLiteral("无法写入缓存文件，后续数据将无法保存为数据文件！"), kError);
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
    return m_terminal->isEmpty() && !(m_unsaved && m_hidden);
}

bool ReceiveStore::save()
{
    if (!isEmpty()) {
        const Target target = askForFile();
        return !target.name.isEmpty() && writeTo(target);
    }
    emit notify(QStringLiteral("当前无数据需要保存！"), kInformation);
    return false;
}

ReceiveStore::Target ReceiveStore::askForFile()
{
    // Without text shown, a text file would be an empty one.
    const bool noText = m_terminal->isEmpty();
    const QString filters = noText ? kBytesFilter : kTextFilter + QStringLiteral(";;") + kBytesFilter;
    QString filter = noText ? kBytesFilter : kTextFilter;
    const QString name = QtFileDialog::getSaveFileName(m_page, QString(), QString(), filters, &filter);
    return {name,
            noText || filter == kBytesFilter || name.endsWith(QStringLiteral(".bin"), Qt::CaseInsensitive)};
}

bool ReceiveStore::writeTo(const Target &target)
{
    m_unsaved = false; // what comes while it is written is not in the file
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const bool saved =
        target.asBytes ? ReceivedFiles::saveBytes(m_spool, target.name)
                       : ReceivedFiles::saveText(*m_terminal, target.name, Settings::instance().textCodec);
    QGuiApplication::restoreOverrideCursor();
    if (!saved)
        m_unsaved = true;
    if (saved && target.asBytes && m_spool.state() == ByteSpool::State::Incomplete)
        emit notify(QStringLiteral("文件保存完成，但因磁盘空间不足部分数据已丢失！"), kError);
    else
        emit notify(saved ? QStringLiteral("文件保存完成!") : QStringLiteral("文件保存失败!"),
                    saved ? kInformation : kError);
    return saved;
}

// To dated files: the text shown, and the bytes as they came when the display
// doesn't hold them all.
bool ReceiveStore::saveTo(const QString &folder)
{
    if (folder.isEmpty() || !QDir().mkpath(folder))
        return false;
    const QString text = QStringLiteral(".txt");
    const QString bytes = QStringLiteral(".bin");
    const QString name = ReceivedFiles::datedName(folder, {text, bytes});
    const int codec = Settings::instance().textCodec;
    return (m_terminal->isEmpty() || ReceivedFiles::saveText(*m_terminal, name + text, codec)) &&
           (!m_hidden || ReceivedFiles::saveBytes(m_spool, name + bytes));
}

// Or in the user's documents, where the program's folder cannot be written.
bool ReceiveStore::saveBesideProgram()
{
    return saveTo(AppPaths::root() + QStringLiteral("/save")) ||
           saveTo(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
}

bool ReceiveStore::mayClose()
{
    m_atExit = AtExit::Unasked;
    return Settings::instance().closeBehaviour != Settings::Ask || !m_unsaved || isEmpty() || askAtExit();
}

bool ReceiveStore::askAtExit()
{
    switch (QtMessageBox::saveQuestion(m_page, kQuestion,
                                       QStringLiteral("当前有数据未保存，是否保存接收数据?"))) {
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
    if (!m_unsaved || isEmpty())
        return true;
    switch (Settings::instance().closeBehaviour) {
    case Settings::Ask:
        if (m_atExit == AtExit::Unasked && !askAtExit())
            return false;
        return m_atExit == AtExit::Discard || writeTo(m_exitFile);
    case Settings::AutoSave:
        m_unsaved = !saveBesideProgram();
        return !m_unsaved ||
               QtMessageBox::question(m_page, kQuestion,
                                      QStringLiteral("接收数据自动保存失败，是否仍然退出?")) == 1;
    default:
        return true;
    }
}
