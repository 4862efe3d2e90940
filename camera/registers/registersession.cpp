#include "registersession.h"

namespace {

constexpr int kSingleReplyMs = 1000;
constexpr int kTableReplyMs = 300; // longer than a slow board needs, over a slow line
constexpr int kWritePauseMs = 10;  // writes have no reply
constexpr int kReadPauseMs = 1;

bool isSameAddress(quint32 requested, quint16 replied)
{
    return (requested & 0xFFFF) == replied;
}

} // namespace

RegisterSession::RegisterSession(QObject *parent)
    : QObject(parent)
    , m_singleTimer(this)
    , m_timer(this)
{
    m_singleTimer.setSingleShot(true);
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_singleTimer, &QTimer::timeout, this, &RegisterSession::reportUnanswered);
    connect(&m_timer, &QTimer::timeout, this, &RegisterSession::advance);
}

bool RegisterSession::fits(quint32 number, int length)
{
    return length < 1 || length >= 4 || number >> (8 * length) == 0;
}

// ---- one register

bool RegisterSession::read(quint32 address)
{
    m_single = SingleRead{m_target.device, address};
    m_singleTimer.start(kSingleReplyMs);
    emit requested({address, std::nullopt}); // within which all may be stopped
    return m_single.has_value();
}

void RegisterSession::reportUnanswered()
{
    if (m_single)
        emit unanswered(m_single->address);
}

// ---- tables

bool RegisterSession::start(Access access)
{
    if (isRunning())
        return false;
    m_access = access;
    m_queue.clear();
    m_progress = {};
    m_isAwaiting = false;
    for (int row = 0; row < table(access)->rowCount(); ++row)
        queueRow(row);
    m_progress.total = m_queue.size();
    m_timer.start(0);
    return true;
}

// Rows that are no register, titles for one, are left out. What does not fit the
// lengths would be cut.
void RegisterSession::queueRow(int row)
{
    RegisterTableModel *const rows = table(m_access);
    rows->setOutcome(row, RegisterTableModel::NoOutcome);
    const RegisterRow &cells = rows->row(row);
    const bool isWrite = m_access == Write;
    quint32 address = 0;
    quint32 value = 0;
    if (!cells.addressNumber(&address))
        return;
    const bool hasValue = !isWrite || (cells.valueNumber(&value) && fits(value, m_target.valueLength));
    if (!hasValue || !fits(address, m_target.addressLength)) {
        rows->setOutcome(row, RegisterTableModel::NotSent);
        ++m_progress.notSent;
        return;
    }
    m_queue.append({row, {address, isWrite ? std::optional<quint32>(value) : std::nullopt}});
}

void RegisterSession::stop(Access access)
{
    if (access == m_access)
        stopTable();
}

void RegisterSession::stopTable()
{
    if (!isRunning())
        return;
    m_timer.stop();
    m_isAwaiting = false;
    emit finished(m_access);
}

void RegisterSession::stopAll()
{
    m_single.reset();
    m_singleTimer.stop();
    stopTable();
}

void RegisterSession::advance()
{
    if (m_isAwaiting)
        return endRead(RegisterTableModel::Unanswered, {});
    m_timer.stop();
    if (m_progress.done < m_progress.total)
        sendNext();
    else
        emit finished(m_access);
}

void RegisterSession::sendNext()
{
    const TableRequest next = m_queue.at(m_progress.done++);
    const bool isRead = m_access == Read;
    m_isAwaiting = isRead;
    if (isRead)
        m_readDevice = m_target.device;
    m_timer.start(isRead ? kTableReplyMs : kWritePauseMs);
    emit requested(next.request); // within which all may be stopped
    if (!isRunning())
        return;
    if (!isRead)
        table(Write)->setOutcome(next.row, RegisterTableModel::Written);
    emit progressed(m_access);
}

// Without a value the old one goes: it was not read now.
void RegisterSession::endRead(RegisterTableModel::Outcome outcome, const QString &value)
{
    const int row = m_queue.at(m_progress.done - 1).row;
    m_isAwaiting = false;
    m_progress.unanswered += outcome == RegisterTableModel::Unanswered ? 1 : 0;
    m_progress.refused += outcome == RegisterTableModel::Refused ? 1 : 0;
    m_timer.start(kReadPauseMs);
    table(Read)->setValue(row, value);
    table(Read)->setOutcome(row, outcome);
    emit progressed(m_access);
}

// ---- replies

void RegisterSession::addReply(const Reply &reply)
{
    if (m_isAwaiting && reply.device == m_readDevice &&
        isSameAddress(m_queue.at(m_progress.done - 1).request.address, reply.address)) {
        endRead(reply.isGood ? RegisterTableModel::Answered : RegisterTableModel::Refused,
                reply.isGood ? reply.value : QString());
    } else if (m_single && reply.device == m_single->device &&
               isSameAddress(m_single->address, reply.address)) {
        m_single.reset();
        m_singleTimer.stop();
        if (reply.isGood)
            emit valueRead(reply.value);
    } else if (reply.isGood && reply.device == m_readDevice.value_or(m_target.device)) {
        addLateReply(reply);
    }
}

// A late reply, or one without a request. Values that were read are not
// overwritten, nor rows that will be read.
void RegisterSession::addLateReply(const Reply &reply)
{
    RegisterTableModel *const rows = table(Read);
    for (int row = 0; row < rows->rowCount(); ++row) {
        quint32 address = 0;
        if (!rows->row(row).addressNumber(&address) || !isSameAddress(address, reply.address))
            continue;
        const RegisterTableModel::Outcome outcome = rows->outcome(row);
        if (outcome != RegisterTableModel::Unanswered &&
            (outcome != RegisterTableModel::NoOutcome || isRunning()))
            continue;
        rows->setValue(row, reply.value);
        rows->setOutcome(row, RegisterTableModel::Answered);
        if (outcome == RegisterTableModel::Unanswered && m_access == Read && m_progress.unanswered > 0) {
            --m_progress.unanswered;
            emit progressed(Read);
        }
        return;
    }
}
