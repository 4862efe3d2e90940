#include "recordingwriter.h"

#include <QDir>
#include <QElapsedTimer>
#include <QStorageInfo>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace {

constexpr auto kSecurePeriod = std::chrono::milliseconds(1000);

} // namespace

// What is public is shared under the mutex; the rest is the thread's alone.
class RecordingWriter::Thread
{
public:
    Thread(Kind kind, const QString &folder, const QString &stem)
        : m_output(RecordingOutput::make(kind, folder, stem))
        , m_folder(folder)
    {
    }

    void run()
    {
        QDir().mkpath(m_folder);
        m_sinceSecured.start();
        reportDisk();
        for (RecordingOutput::Item item; take(&item);)
            write(item);
        const QString reason = m_output->finish();
        m_output.reset();
        const std::lock_guard<std::mutex> lock(mutex);
        if (status.reason.isEmpty())
            status.reason = reason;
        status.isFinished = true;
        finished.notify_all();
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::condition_variable finished;
    std::deque<RecordingOutput::Item> pending;
    qint64 pendingBytes = 0; // with the one that is being written
    bool isFinishing = false;
    Status status;

private:
    // False at the end, or after the disk has refused.
    bool take(RecordingOutput::Item *item)
    {
        std::unique_lock<std::mutex> lock(mutex);
        pendingBytes -= item->size();
        const auto isDue = [this] { return isFinishing || !pending.empty(); };
        while (!changed.wait_for(lock, kSecurePeriod, isDue) || m_sinceSecured.hasExpired(1000)) {
            lock.unlock();
            const QString reason = m_output->secure();
            reportDisk();
            m_sinceSecured.start();
            lock.lock();
            if (!reason.isEmpty())
                refuse(reason);
        }
        if (!status.reason.isEmpty()) {
            status.dropped += static_cast<qint64>(pending.size());
            pending.clear();
        }
        if (pending.empty())
            return false;
        *item = std::move(pending.front());
        pending.pop_front();
        return true;
    }

    void write(const RecordingOutput::Item &item)
    {
        const RecordingOutput::Result result = m_output->add(item);
        const std::lock_guard<std::mutex> lock(mutex);
        status.lastFile = m_output->lastFile();
        status.bytes += result.bytes;
        if (!result.reason.isEmpty()) {
            refuse(result.reason);
            ++status.dropped;
        } else if (result.isPicture) {
            ++status.items;
        } else {
            ++status.undecodable;
        }
    }

    // Under the mutex.
    void refuse(const QString &reason)
    {
        status.reason = reason;
        isFinishing = true;
    }

    void reportDisk()
    {
        const qint64 available = QStorageInfo(m_folder).bytesAvailable();
        const std::lock_guard<std::mutex> lock(mutex);
        status.freeBytes = available;
    }

    std::unique_ptr<RecordingOutput> m_output;
    QString m_folder;
    QElapsedTimer m_sinceSecured;
};

RecordingWriter::RecordingWriter(Kind kind, const QString &folder, const QString &stem)
    : m_thread(std::make_shared<Thread>(kind, folder, stem))
{
    std::thread([thread = m_thread] { thread->run(); }).detach();
}

RecordingWriter::~RecordingWriter()
{
    finish();
}

void RecordingWriter::add(const RecordingOutput::Item &item)
{
    const std::lock_guard<std::mutex> lock(m_thread->mutex);
    if (m_thread->isFinishing ||
        (m_thread->pendingBytes > 0 && m_thread->pendingBytes + item.size() > maxPendingBytes)) {
        ++m_thread->status.dropped;
        return;
    }
    m_thread->pendingBytes += item.size();
    m_thread->pending.push_back(item);
    m_thread->changed.notify_one();
}

void RecordingWriter::finish()
{
    const std::lock_guard<std::mutex> lock(m_thread->mutex);
    m_thread->isFinishing = true;
    m_thread->changed.notify_one();
}

bool RecordingWriter::waitForFinished(int ms)
{
    std::unique_lock<std::mutex> lock(m_thread->mutex);
    return m_thread->finished.wait_for(lock, std::chrono::milliseconds(ms),
                                       [this] { return m_thread->status.isFinished; });
}

bool RecordingWriter::isBehind() const
{
    const std::lock_guard<std::mutex> lock(m_thread->mutex);
    return m_thread->pendingBytes > maxPendingBytes / 2;
}

RecordingWriter::Status RecordingWriter::status() const
{
    const std::lock_guard<std::mutex> lock(m_thread->mutex);
    return m_thread->status;
}
