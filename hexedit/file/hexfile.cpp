#include "hexfile.h"

#include <QDateTime>
#include <QFileInfo>
#include <algorithm>
#include <new>
#include <utility>

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
    m_state = State();
}

// ---- opening

void HexFile::open(const QString &fileName, const QString &source, const Report &report, As as)
{
    const auto loading = std::make_shared<Loading>();
    const FileStamp stamp = FileStamp::of(fileName);
    loading->as = as;
    loading->source = source;
    loading->sourceStamp = FileStamp::of(source);
    if (!loading->reader.open(source)) {
        report({false, false, loading->reader.reason(), QString()});
        return;
    }
    loading->nameBefore = m_name;
    loading->stampBefore = m_watch.stamp();
    loading->stateBefore = std::exchange(m_state, State());
    follow(fileName, stamp);
    emit readingBegan();
    m_task->start({QStringLiteral("正在打开"),
                   [this, loading] { return readBlock(*loading); },
                   [loading] { return loading->reader.permille(); },
                   [this, loading, report](bool done) { report(endOpening(*loading, done)); },
                   {}});
}

SlicedTask::Step HexFile::readBlock(Loading &loading)
{
    try {
        if (loading.state == HexReader::State::Running) {
            QByteArray block;
            loading.state = loading.reader.step(&block);
            if (loading.state == HexReader::State::Running)
                readContent(loading, block);
            else if (loading.state != HexReader::State::Done || !loading.records)
                return SlicedTask::Step::Done;
        } else if (loading.records->finish() == HexRecordReader::State::Done) {
            return SlicedTask::Step::Done;
        }
    } catch (const std::bad_alloc &) {
        loading.state = HexReader::State::OutOfMemory;
        return SlicedTask::Step::Done;
    }
    return SlicedTask::Step::Running;
}

void HexFile::readContent(Loading &loading, const QByteArray &block)
{
    if (!loading.hasBegun) {
        loading.hasBegun = true;
        m_state.contentForm = HexForms::ofContent(block, m_name);
        if (m_state.contentForm != HexForm::Bytes && loading.as == As::Content)
            loading.records = std::make_unique<HexRecordReader>(m_state.contentForm);
    }
    if (loading.records)
        loading.records->add(block.constData(), block.size());
    else
        emit blockRead(block);
}

HexFile::Result HexFile::endOpening(Loading &loading, bool done)
{
    Result result;
    if (done && loading.state == HexReader::State::Done) {
        if (loading.records) {
            m_state.image = loading.records->takeImage();
            for (const QByteArray &block : loading.records->blocks())
                emit blockRead(block);
        }
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
    m_state = loading.stateBefore;
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

void HexFile::save(std::unique_ptr<HexOutput> output, const Report &report)
{
    start(m_name, std::move(output), m_state.image, report);
}

void HexFile::saveAs(const QString &fileName, std::unique_ptr<HexOutput> output, const HexImage &image,
                     const Report &report)
{
    if (!isSame(fileName))
        HexSaver::setLeftoverAside(fileName);
    start(fileName, std::move(output), image, report);
}

void HexFile::start(const QString &fileName, std::unique_ptr<HexOutput> output, const HexImage &image,
                    const Report &report)
{
    m_watch.setPaused(true);
    m_saver = std::make_unique<HexSaver>(fileName, std::move(output), m_disk);
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
                   [this, fileName, image, report](bool done) { report(endSaving(fileName, image, done)); },
                   [this] { return m_saver->mayStop(); }});
}

HexFile::Result HexFile::endSaving(const QString &fileName, const HexImage &image, bool done)
{
    if (!done)
        m_saver->stop();
    const HexSaver::Outcome outcome = m_saver->outcome();
    m_saver.reset();
    m_watch.setPaused(false);
    if (outcome.inPlace) {
        follow(fileName, FileStamp::of(fileName));
        if (image.form != m_state.image.form)
            m_state.contentForm = image.form;
        m_state.image = image;
        m_state.image.faults = HexFaults(); // what was wrong is written right, or not any more
    } else if (done && fileName == m_name) {
        m_watch.acknowledge(); // the report tells what a failed save has moved
    } else {
        m_watch.check(); // what other programs did while it was paused
    }
    return {outcome.saved, outcome.inPlace, outcome.reason, outcome.consequence};
}
