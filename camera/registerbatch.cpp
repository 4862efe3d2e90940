#include "registerbatch.h"

namespace {

constexpr int kReplyMs = 300; // longer than a slow board needs, over a slow line
constexpr int kWriteMs = 10;
constexpr int kReadPauseMs = 1;

} // namespace

RegisterBatch::RegisterBatch(QObject *parent)
    : QObject(parent)
    , m_timer(this)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &RegisterBatch::timeOut);
}

void RegisterBatch::start(const QVector<Item> &items)
{
    m_items = items;
    m_counts.clear();
    m_next = 0;
    m_waiting = false;
    m_timer.start(0);
}

void RegisterBatch::stop()
{
    if (!isRunning())
        return;
    m_timer.stop();
    m_waiting = false;
    emit finished();
}

void RegisterBatch::timeOut()
{
    if (m_waiting)
        end(Unanswered);
    else
        next();
}

void RegisterBatch::next()
{
    if (m_next >= m_items.size()) {
        emit finished();
        return;
    }
    const Item item = m_items.at(m_next++);
    const bool write = !item.value.isEmpty();
    m_waiting = !write;
    // Before sending, within which all may be stopped.
    m_timer.start(write ? kWriteMs : kReplyMs);
    emit request(item);
    if (!isRunning())
        return;
    if (write) {
        ++m_counts[Written];
        emit ended(item.row, Written);
    }
    emit progressed();
}

void RegisterBatch::end(Outcome outcome)
{
    m_waiting = false;
    ++m_counts[outcome];
    m_timer.start(kReadPauseMs);
    emit ended(m_items.at(m_next - 1).row, outcome);
    emit progressed();
}

int RegisterBatch::waitingRow(quint16 address) const
{
    const bool isAsked = m_waiting && (m_items.at(m_next - 1).address & 0xFFFF) == address;
    return isAsked ? m_items.at(m_next - 1).row : -1;
}

void RegisterBatch::takeReply(bool good)
{
    end(good ? Answered : Refused);
}
