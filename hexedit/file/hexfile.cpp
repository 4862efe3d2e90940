#include "hexfile.h"

#include <QDateTime>
#include <QFileInfo>
#include <algorithm>

namespace {

// A leftover that changes is another one.
QString keyOf(const QString &leftover)
{
    return leftover + QFileInfo(leftover).lastModified().toString(Qt::ISODateWithMs);
}

} // namespace

HexFile::HexFile(SlicedTask *task, const HexSaver::Disk &disk, QObject *parent)
    : QObject(parent)
    , m_task(task)
    , m_disk(disk)
    , m_watch(this)
{
    connect(&m_watch, &HexFileWatch::changed, this, &HexFile::changedOutside);
}

bool HexFile::isSame(const QString &fileName) const
{
    return HexSaver::targetOf(fileName) == HexSaver::targetOf(m_name);
}

void HexFile::follow(const QString &fileName, const FileStamp &stamp)
{
    m_name = fileName;
    m_consent = FileStamp();
    m_watch.follow(fileName, stamp);
}

void HexFile::close()
{
    follow(QString(), FileStamp());
}

// ---- opening

void HexFile::open(const QString &fileName, const QString &source, const Report &report)
{
    const auto loading = std::make_shared<Loading>();
    const FileStamp stamp = FileStamp::of(fileName);
    loading->source = source;
    loading->sourceStamp = FileStamp::of(source);
    if (!loading->reader.open(source)) {
        report({false, false, loading->reader.reason(), QString()});
        return;
    }
    loading->nameBefore = m_name;
    loading->stampBefore = m_watch.stamp();
    follow(fileName, stamp);
    emit readingBegan();
    m_task->start({QStringLiteral("正在打开"),
                   [this, loading] { return readBlock(*loading); },
                   [loading] { return loading->reader.permille(); },
                   [this, loading, report](bool) { report(endOpening(*loading)); },
                   {}});
}

SlicedTask::Step HexFile::readBlock(Loading &loading)
{
    QByteArray block;
    loading.state = loading.reader.step(&block);
    if (loading.state != HexReader::State::Running)
        return SlicedTask::Step::Done;
    emit blockRead(block);
    return SlicedTask::Step::Running;
}

HexFile::Result HexFile::endOpening(const Loading &loading)
{
    Result result;
    if (loading.state == HexReader::State::Done) {
        result.done = true;
        result.inPlace = loading.source == m_name;
        if (!result.inPlace)
            result.consequence = QStringLiteral("已载入上次保存失败时留下的内容，保存后写入原文件");
        else if (!(FileStamp::of(loading.source) == loading.sourceStamp))
            result.consequence = QStringLiteral("文件在打开期间已被其他程序修改，内容可能不完整，请重新打开");
        return result;
    }
    if (loading.state == HexReader::State::Failed)
        result.reason = loading.reader.reason();
    else if (loading.state == HexReader::State::OutOfMemory)
        result.reason = QStringLiteral("内存不足");
    follow(loading.nameBefore, loading.stampBefore);
    return result;
}

QStringList HexFile::leftoversOf(const QString &fileName) const
{
    QStringList names = HexSaver::leftoversOf(fileName);
    names.erase(std::remove_if(names.begin(), names.end(),
                               [this](const QString &name) { return m_declined.contains(keyOf(name)); }),
                names.end());
    return names;
}

void HexFile::decline(const QString &leftover)
{
    m_declined.insert(keyOf(leftover));
}

// ---- saving

bool HexFile::needsConsent() const
{
    const FileStamp now = FileStamp::of(m_name);
    return now.exists && !(now == m_watch.stamp()) && !(now == m_consent);
}

void HexFile::save(const HexDocument &document, const Report &report)
{
    start(m_name, document, report);
}

void HexFile::saveAs(const QString &fileName, const HexDocument &document, const Report &report)
{
    if (!isSame(fileName))
        HexSaver::setLeftoverAside(fileName);
    start(fileName, document, report);
}

void HexFile::start(const QString &fileName, const HexDocument &document, const Report &report)
{
    m_watch.setPaused(true);
    m_saver = std::make_unique<HexSaver>(fileName, document, m_disk);
    m_task->start({QStringLiteral("正在保存"),
                   [this] {
                       switch (m_saver->step()) {
                       case HexSaver::State::Running:
                           return SlicedTask::Step::Running;
                       case HexSaver::State::Waiting:
                           return SlicedTask::Step::Waiting;
                       case HexSaver::State::Done:
                           break;
                       }
                       return SlicedTask::Step::Done;
                   },
                   [this] { return m_saver->permille(); },
                   [this, fileName, report](bool done) { report(endSaving(fileName, done)); },
                   [this] { return m_saver->mayStop(); }});
}

HexFile::Result HexFile::endSaving(const QString &fileName, bool done)
{
    if (!done)
        m_saver->stop();
    const HexSaver::Outcome outcome = m_saver->outcome();
    m_saver.reset();
    m_watch.setPaused(false);
    if (outcome.inPlace)
        follow(fileName, FileStamp::of(fileName));
    else if (done && fileName == m_name)
        m_watch.acknowledge(); // the report tells what a failed save has moved
    else
        m_watch.check(); // what other programs did while it was paused
    return {outcome.saved, outcome.inPlace, outcome.reason, outcome.consequence};
}
