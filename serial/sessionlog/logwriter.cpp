#include "logwriter.h"

#include "bytequeue.h"

#include <QDateTime>

#include <chrono>
#include <thread>
#include <utility>

namespace {

constexpr auto kCollect = std::chrono::milliseconds(20); // records for one write
constexpr auto kRowEnd = std::chrono::milliseconds(100); // of a dump, where nothing comes
constexpr auto kRetry = std::chrono::milliseconds(1000);
constexpr int kMaxWrite = 256 * 1024;

} // namespace

// What is public is shared under the mutex; the rest is the thread's alone.
class LogWriter::Thread
{
public:
    Thread(LogForm::Kind form, const LogFiles::Target &target)
        : m_form(form)
        , m_files(target)
    {
    }

    void run()
    {
        for (bool isEnd = false; !isEnd;) {
            isEnd = collect();
            write();
        }
        m_files.close();
        const std::lock_guard<std::mutex> lock(mutex);
        status.isFinished = true;
        status.lost += m_bytes.size();
        finished.notify_all();
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::condition_variable finished;
    std::vector<LogForm::Record> records;
    qint64 recordBytes = 0;
    bool isFinishing = false;
    bool wantsFile = false;
    Status status;

private:
    // Takes the records that have come. True: they are the last ones. While the disk
    // refuses, they stay where they are counted.
    bool collect()
    {
        std::vector<LogForm::Record> taken;
        std::unique_lock<std::mutex> lock(mutex);
        const bool isRefused = !status.reason.isEmpty();
        const auto isDue = [this] { return isFinishing || !records.empty() || wantsFile; };
        const auto isEnding = [this] { return isFinishing; };
        if (isRefused)
            changed.wait_for(lock, kRetry, isEnding);
        else if (m_form.isInRow())
            changed.wait_for(lock, kRowEnd, isDue);
        else
            changed.wait(lock, isDue);
        changed.wait_for(lock, kCollect, isEnding);
        m_wantsFile = m_wantsFile || std::exchange(wantsFile, false);
        if (!isRefused || isFinishing) {
            taken.swap(records);
            recordBytes = 0;
        }
        const bool isEnd = isFinishing;
        lock.unlock();
        for (const LogForm::Record &record : taken)
            m_bytes.append(m_form.add(record));
        if (isEnd || taken.empty())
            m_bytes.append(m_form.endRow());
        return isEnd;
    }

    void write()
    {
        QString reason;
        while (reason.isEmpty() && (m_bytes.size() > 0 || m_wantsFile)) {
            const int count = qMin(m_bytes.size(), kMaxWrite);
            reason = m_files.prepare(count, QDateTime::currentMSecsSinceEpoch());
            if (!reason.isEmpty())
                break;
            m_wantsFile = false;
            const qint64 written = m_files.write(m_bytes.front(), count);
            m_bytes.drop(written);
            if (written < count)
                reason = m_files.reason();
            report(reason, written);
        }
        report(reason, 0);
    }

    void report(const QString &reason, qint64 written)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        status.reason = reason;
        status.written += written;
        status.fileName = m_files.fileName();
    }

    LogForm m_form;
    LogFiles m_files;
    ByteQueue m_bytes; // to be written
    bool m_wantsFile = false;
};

LogWriter::LogWriter(LogForm::Kind form, const LogFiles::Target &target)
    : m_thread(std::make_shared<Thread>(form, target))
{
    std::thread([thread = m_thread] { thread->run(); }).detach();
}

LogWriter::~LogWriter()
{
    finish();
}

bool LogWriter::add(const LogForm::Record &record)
{
    const std::lock_guard<std::mutex> lock(m_thread->mutex);
    if (m_thread->recordBytes + record.bytes.size() > maxWaitingBytes) {
        m_thread->status.lost += record.bytes.size();
        return false;
    }
    m_thread->recordBytes += record.bytes.size();
    m_thread->records.push_back(record);
    m_thread->changed.notify_one();
    return true;
}

void LogWriter::openFile()
{
    const std::lock_guard<std::mutex> lock(m_thread->mutex);
    m_thread->wantsFile = true;
    m_thread->changed.notify_one();
}

void LogWriter::finish()
{
    const std::lock_guard<std::mutex> lock(m_thread->mutex);
    m_thread->isFinishing = true;
    m_thread->changed.notify_one();
}

bool LogWriter::waitForFinished(int ms)
{
    std::unique_lock<std::mutex> lock(m_thread->mutex);
    return m_thread->finished.wait_for(lock, std::chrono::milliseconds(ms),
                                       [this] { return m_thread->status.isFinished; });
}

LogWriter::Status LogWriter::status() const
{
    const std::lock_guard<std::mutex> lock(m_thread->mutex);
    return m_thread->status;
}
