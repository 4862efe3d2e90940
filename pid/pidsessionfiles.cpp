#include "pidsessionfiles.h"

#include "filereason.h"
#include "pidsessionreader.h"
#include "pidsessionwriter.h"
#include "pidtimetable.h"
#include "safefile.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <utility>

namespace {

constexpr int kSliceMs = 8;
constexpr int kSamples = SampleStore::blockSamples; // between two looks at the clock

} // namespace

class PidSessionFiles::Job
{
public:
    Job(Kind kind, const QString &fileName) { outcome = {kind, fileName, false, {}, {}, {}}; }
    Q_DISABLE_COPY_MOVE(Job)
    virtual ~Job() = default;

    virtual bool open() = 0;    // else, the outcome has an error
    virtual bool advance() = 0; // true at the end
    virtual int percent() const = 0;
    virtual void finish() = 0; // puts the result in its place, or an error in the outcome
    virtual void abandon() {}

    Outcome outcome;
};

// A session file or a table: both are written alike.
class PidSessionFiles::WriteJob : public Job
{
public:
    WriteJob(Kind kind, const QString &fileName, const PidSessionInfo &info, PidRecorder *recorder)
        : Job(kind, fileName)
        , m_recorder(recorder)
        , m_file(fileName)
    {
        if (kind == Kind::Save)
            m_session = std::make_unique<PidSessionWriter>(recorder, info, &m_file);
        else
            m_table = std::make_unique<PidTimeTable>(recorder, info, &m_file);
        // What the user says of a run from now on is not in the file.
        m_wasEdited = kind == Kind::Save && recorder->runs()->isEdited();
        if (kind == Kind::Save)
            recorder->runs()->setSaved();
    }

    bool open() override
    {
        if (m_file.open(QIODevice::WriteOnly))
            return true;
        fail(FileReason::of(m_file));
        return false;
    }
    bool advance() override { return m_session ? m_session->advance(kSamples) : m_table->advance(kSamples); }
    int percent() const override { return m_session ? m_session->percent() : m_table->percent(); }
    void finish() override
    {
        QString error = m_session ? m_session->error() : m_table->error();
        if (!error.isEmpty()) {
            const QString reason = FileReason::of(m_file);
            m_file.cancelWriting();
            fail(reason.isEmpty() ? error : reason);
        } else if (!SafeFile::commit(m_file, &error)) {
            fail(error);
        } else if (const qint64 leftOut = m_session ? m_session->leftOut() : m_table->leftOut()) {
            outcome.notes += QStringLiteral("保存时有 %1 个样本已超出记录上限，未写入文件").arg(leftOut);
        }
    }
    void abandon() override
    {
        if (m_wasEdited && !m_recorder->runs()->runs().isEmpty())
            m_recorder->runs()->setSaved(false);
    }

private:
    void fail(const QString &error)
    {
        outcome.error = error.isEmpty() ? QStringLiteral("未知错误") : error;
        abandon();
    }

    PidRecorder *m_recorder;
    QSaveFile m_file;
    std::unique_ptr<PidSessionWriter> m_session;
    std::unique_ptr<PidTimeTable> m_table;
    bool m_wasEdited = false;
};

class PidSessionFiles::OpenJob : public Job
{
public:
    OpenJob(const QString &fileName, PidRecorder *recorder)
        : Job(Kind::Open, fileName)
        , m_recorder(recorder)
        , m_file(fileName)
        , m_reader(&m_file, &m_read)
    {
        m_read.setLimit(recorder->limit());
        connect(&m_read, &PidRecorder::diskRefused, &m_read, [this](const QString &reason) {
            outcome.notes += QStringLiteral("临时文件无法写入（%1），只保留内存放得下的样本").arg(reason);
        });
    }

    bool open() override
    {
        if (m_file.exists() && !QFileInfo(m_file).isFile()) // opening a named pipe blocks
            outcome.error = QStringLiteral("不是普通文件");
        else if (!m_file.open(QIODevice::ReadOnly))
            outcome.error = FileReason::of(m_file);
        return outcome.error.isEmpty();
    }
    bool advance() override { return m_reader.advance(kSamples) || m_file.error() != QFileDevice::NoError; }
    int percent() const override { return m_reader.percent(); }
    void finish() override
    {
        outcome.error = FileReason::of(m_file);
        if (outcome.error.isEmpty())
            outcome.error = m_reader.error();
        if (!outcome.error.isEmpty())
            return;
        outcome.notes += m_reader.notes();
        outcome.info = m_reader.info();
        m_recorder->takeOver(&m_read);
    }

private:
    PidRecorder *m_recorder;
    PidRecorder m_read;
    QFile m_file;
    PidSessionReader m_reader;
};

PidSessionFiles::PidSessionFiles(PidRecorder *recorder, QObject *parent)
    : QObject(parent)
    , m_recorder(recorder)
    , m_next(this)
{
    connect(&m_next, &QTimer::timeout, this, &PidSessionFiles::runSlice);
}

PidSessionFiles::~PidSessionFiles() = default;

void PidSessionFiles::save(const QString &fileName, const PidSessionInfo &info)
{
    start(std::make_unique<WriteJob>(Kind::Save, fileName, info, m_recorder));
}

void PidSessionFiles::exportTable(const QString &fileName, const PidSessionInfo &info)
{
    start(std::make_unique<WriteJob>(Kind::Export, fileName, info, m_recorder));
}

void PidSessionFiles::open(const QString &fileName)
{
    start(std::make_unique<OpenJob>(fileName, m_recorder));
}

bool PidSessionFiles::isOpening() const
{
    return m_job && m_job->outcome.kind == Kind::Open;
}

void PidSessionFiles::cancel()
{
    if (m_job)
        end(true);
}

void PidSessionFiles::complete()
{
    if (!m_job)
        return;
    const bool isCancelled = isOpening();
    while (!isCancelled && !m_job->advance()) {
    }
    end(isCancelled);
}

void PidSessionFiles::start(std::unique_ptr<Job> job)
{
    m_job = std::move(job);
    m_percent = -1;
    if (!m_job->open()) {
        emit finished(std::exchange(m_job, nullptr)->outcome);
        return;
    }
    m_next.start();
    runSlice();
}

void PidSessionFiles::runSlice()
{
    QElapsedTimer clock;
    clock.start();
    bool isDone = false;
    while (!isDone && clock.elapsed() < kSliceMs)
        isDone = m_job->advance();
    if (isDone) {
        end(false);
        return;
    }
    const int percent = m_job->percent();
    if (percent != std::exchange(m_percent, percent))
        emit progress(percent);
}

void PidSessionFiles::end(bool isCancelled)
{
    m_next.stop();
    const std::unique_ptr<Job> job = std::move(m_job);
    job->outcome.isCancelled = isCancelled;
    if (isCancelled)
        job->abandon();
    else
        job->finish();
    emit finished(job->outcome);
}
