#include "registersession.h"

namespace {

constexpr int kReplyMs = 300;     // longer than a slow board needs, over a slow line
constexpr int kWritePauseMs = 10; // writes have no reply
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
    connect(&m_singleTimer, &QTimer::timeout, this, &RegisterSession::advanceSingle);
    connect(&m_timer, &QTimer::timeout, this, &RegisterSession::advance);
}

bool RegisterSession::fits(quint32 number, int length)
{
    return length < 1 || length >= 4 || number >> (8 * length) == 0;
}

bool RegisterSession::Reply::isValue(quint32 number) const
{
    bool isNumber = false;
    return isGood && value.toUInt(&isNumber, 16) == number && isNumber;
}

// ---- one register

bool RegisterSession::read(quint32 address)
{
    m_single = SingleRead{m_target.device, address, std::nullopt, true};
    m_singleTimer.start(kReplyMs);
    emit requested({address, std::nullopt}); // within which all may be stopped
    return m_single.has_value();
}

void RegisterSession::write(quint32 address, quint32 value)
{
    if (m_readsBack) {
        m_single = SingleRead{m_target.device, address, value, false};
        m_singleTimer.start(kWritePauseMs);
    }
    emit requested({address, value});
}

// A read-back of another device would say nothing about the write.
void RegisterSession::advanceSingle()
{
    if (!m_single)
        return;
    if (m_single->isSent || m_single->device != m_target.device) {
        emit unanswered(m_single->address);
        return;
    }
    m_single->isSent = true;
    m_singleTimer.start(kReplyMs);
    emit requested({m_single->address, std::nullopt});
}

void RegisterSession::endSingle(const Reply &reply)
{
    const SingleRead asked = *m_single;
    m_single.reset();
    m_singleTimer.stop();
    if (asked.written)
        emit readBack(asked.address, *asked.written, reply);
    else if (reply.isGood)
        emit valueRead(reply.value, reply.sender);
}

// ---- tables

bool RegisterSession::start(Access access)
{
    if (isRunning())
        return false;
    m_access = access;
    m_queue.clear();
    m_progress = {};
    m_progress.isReadBack = access == Write && m_readsBack;
    m_isAwaiting = false;
    m_isReadBackDue = false;
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
        return endRequest(RegisterTableModel::Unanswered, {});
    if (m_isReadBackDue)
        return sendReadBack();
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
    m_isReadBackDue = m_progress.isReadBack;
    m_askedDevice = m_target.device;
    if (isRead)
        m_readDevice = m_askedDevice;
    m_timer.start(isRead ? kReplyMs : kWritePauseMs);
    emit requested(next.request); // within which all may be stopped
    if (!isRunning())
        return;
    if (!isRead && !m_isReadBackDue)
        table(Write)->setOutcome(next.row, RegisterTableModel::Written);
    emit progressed(m_access);
}

// Only the device that was written to can confirm it.
void RegisterSession::sendReadBack()
{
    m_isReadBackDue = false;
    if (m_target.device != m_askedDevice)
        return endRequest(RegisterTableModel::Unanswered, {});
    m_isAwaiting = true;
    m_timer.start(kReplyMs);
    emit requested({m_queue.at(m_progress.done - 1).request.address, std::nullopt});
}

// Without a value the old one goes: it was not read now.
void RegisterSession::endRequest(RegisterTableModel::Outcome outcome, const Reply &reply)
{
    const TableRequest ended = m_queue.at(m_progress.done - 1);
    const bool isRead = !ended.request.value;
    if (!isRead && outcome == RegisterTableModel::Answered && !reply.isValue(*ended.request.value))
        outcome = RegisterTableModel::Differs;
    m_isAwaiting = false;
    m_progress.unanswered += outcome == RegisterTableModel::Unanswered ? 1 : 0;
    m_progress.refused += outcome == RegisterTableModel::Refused ? 1 : 0;
    m_progress.differing += outcome == RegisterTableModel::Differs ? 1 : 0;
    m_timer.start(kReadPauseMs);
    if (isRead)
        table(Read)->setValue(ended.row, reply.isGood ? reply.value : QString());
    table(m_access)->setOutcome(ended.row, outcome, reply.sender, isRead ? QString() : reply.value);
    emit progressed(m_access);
}

// ---- replies

bool RegisterSession::isAwaited(const Reply &reply) const
{
    return m_isAwaiting && reply.device == m_askedDevice &&
           isSameAddress(m_queue.at(m_progress.done - 1).request.address, reply.address);
}

void RegisterSession::addReply(const Reply &reply)
{
    if (isAwaited(reply))
        endRequest(reply.isGood ? RegisterTableModel::Answered : RegisterTableModel::Refused, reply);
    else if (m_single && m_single->isSent && reply.device == m_single->device &&
             isSameAddress(m_single->address, reply.address))
        endSingle(reply);
    else if (reply.isGood && reply.device == m_readDevice.value_or(m_target.device))
        addLateReply(reply);
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
        if (outcome == RegisterTableModel::Answered && rows->sender(row) != reply.sender)
            return; // a second board's answer to the same request
        if (outcome != RegisterTableModel::Unanswered &&
            (outcome != RegisterTableModel::NoOutcome || isRunning()))
            continue;
        rows->setValue(row, reply.value);
        rows->setOutcome(row, RegisterTableModel::Answered, reply.sender);
        if (outcome == RegisterTableModel::Unanswered && m_access == Read && m_progress.unanswered > 0) {
            --m_progress.unanswered;
            emit progressed(Read);
        }
        return;
    }
}
