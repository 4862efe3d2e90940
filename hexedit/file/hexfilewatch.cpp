#include "hexfilewatch.h"

#include "hexsaver.h"

#include <QDir>
#include <QFileInfo>

namespace {
// Many programs remove a file and write it again: that is one change.
constexpr int kSettleMs = 200;
} // namespace

FileStamp FileStamp::of(const QString &fileName)
{
    const QFileInfo file(HexSaver::targetOf(fileName));
    return {file.exists(), file.size(), file.lastModified()};
}

HexFileWatch::HexFileWatch(QObject *parent)
    : QObject(parent)
    , m_watcher(this)
    , m_settle(this)
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(kSettleMs);
    const auto settle = [this] {
        if (!m_settle.isActive())
            m_settle.start();
    };
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, settle);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, settle);
    connect(&m_settle, &QTimer::timeout, this, &HexFileWatch::check);
}

void HexFileWatch::follow(const QString &fileName, const FileStamp &stamp)
{
    m_fileName = fileName;
    m_stamp = m_last = stamp;
    const QStringList paths = m_watcher.files() + m_watcher.directories();
    if (!paths.isEmpty())
        m_watcher.removePaths(paths);
    watch();
}

void HexFileWatch::acknowledge()
{
    m_last = FileStamp::of(m_fileName);
    watch();
}

void HexFileWatch::check()
{
    if (m_fileName.isEmpty() || m_paused)
        return;
    watch();
    const FileStamp now = FileStamp::of(m_fileName);
    if (now == m_last)
        return;
    m_last = now;
    emit changed();
}

// A file that was removed is no longer watched; its folder reports when it is
// back. Where the system watches nothing (some network drives), only check()
// notices changes.
void HexFileWatch::watch()
{
    if (m_fileName.isEmpty())
        return;
    const QFileInfo target(HexSaver::targetOf(m_fileName));
    if (target.exists() && !m_watcher.files().contains(target.absoluteFilePath()))
        m_watcher.addPath(target.absoluteFilePath());
    if (target.absoluteDir().exists() && !m_watcher.directories().contains(target.absolutePath()))
        m_watcher.addPath(target.absolutePath());
}
