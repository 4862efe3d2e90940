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

void RegisterSession::setTarget(const Target &target)
{
    const bool isOther = target.device != m_target.device || target.group != m_target.group ||
                         target.addressLength != m_target.addressLength ||
                         target.valueLength != m_target.valueLength;
    m_target = target;
    if (isOther)
        stopTable(TargetChanged);
}

bool RegisterSession::start(Access access, Task task, const std::optional<QVector<int>> &rows)
{
    if (isRunning())
        return false;
    m_access = access;
    m_queue.clear();
    m_progress = {};
    m_progress.task = task;
    m_progress.isReadBack = access == Write && task == Transfer && m_readsBack;
    m_isAwaiting = false;
    m_isReadBackDue = false;
    m_isRetryDue = false;
    m_stopBefore.reset();
    m_askedDevice = m_target.device;
    beginReport();
    if (!rows)
        table(access)->clearOutcomes();
    const int count = rows ? rows->size() : table(access)->rowCount();
    for (int i = 0; i < count; ++i)
        queueRow(rows ? rows->at(i) : i);
    m_progress.total = m_queue.size();
    m_timer.start(0);
    return true;
}

void RegisterSession::beginReport()
{
    const RegisterReport::Task task = m_progress.task == Compare ? RegisterReport::Compare
                                      : m_access == Read         ? RegisterReport::Read
                                      : m_progress.isReadBack    ? RegisterReport::WriteAndReadBack
                                                                 : RegisterReport::Write;
    m_report.begin(task, m_target.device, now());
}

// Rows that are no register, titles for one, are left out. What does not fit the
// lengths would be cut.
void RegisterSession::queueRow(int row)
{
    RegisterTableModel *const rows = table(m_access);
    rows->setOutcome(row, RegisterTableModel::NoOutcome);
    const RegisterRow &cells = rows->row(row);
    quint32 address = 0;
    quint32 value = 0;
    if (!cells.addressNumber(&address))
        return;
    const bool isRead = m_access == Read && m_progress.task == Transfer;
    const int line = m_report.add(row, cells.address, isRead ? QString() : cells.value);
    const bool hasValue = isReading() || (cells.valueNumber(&value) && fits(value, m_target.valueLength));
    if (!hasValue || !fits(address, m_target.addressLength)) {
        rows->setOutcome(row, RegisterTableModel::NotSent);
        report(line, RegisterTableModel::NotSent, {});
        ++m_progress.notSent;
        if (m_batch.stopsAtError && !m_stopBefore)
            m_stopBefore = m_queue.size();
        return;
    }
    m_queue.append({row, {address, isReading() ? std::nullopt : std::optional<quint32>(value)}, line});
}

void RegisterSession::stop(Access access)
{
    if (access == m_access)
        stopTable(ByUser);
}

void RegisterSession::stopTable(StopReason reason)
{
    if (isRunning())
        endTable(reason);
}

void RegisterSession::endTable(StopReason reason)
{
    m_timer.stop();
    m_isAwaiting = false;
    m_isReadBackDue = false;
    m_isRetryDue = false;
    m_progress.stopReason = reason;
    m_report.end(stopText(reason));
    emit finished(m_access);
}

void RegisterSession::stopAll()
{
    m_single.reset();
    m_singleTimer.stop();
    stopTable(NoLink);
}

QString RegisterSession::stopText(StopReason reason)
{
    switch (reason) {
    case NotStopped:
        break;
    case ByUser:
        return QStringLiteral("被用户停止");
    case NoLink:
        return QStringLiteral("无法发送");
    case TargetChanged:
        return QStringLiteral("设备、长度或组编号已更改");
    case AtError:
        return QStringLiteral("遇错停止");
    }
    return {};
}

void RegisterSession::advance()
{
    if (m_isAwaiting)
        return endRequest(RegisterTableModel::Unanswered, {});
    if (m_isReadBackDue)
        return sendReadBack();
    if (m_stopBefore == m_progress.done && !m_isRetryDue)
        return endTable(AtError);
    m_timer.stop();
    if (m_isRetryDue || m_progress.done < m_progress.total)
        sendNext();
    else
        endTable(NotStopped);
}

void RegisterSession::sendNext()
{
    if (!m_isRetryDue) {
        ++m_progress.done;
        m_tries = 0;
    }
    m_isRetryDue = false;
    ++m_tries;
    const TableRequest next = current();
    m_report.line(next.line).tries = m_tries;
    m_isAwaiting = isReading();
    m_isReadBackDue = m_progress.isReadBack;
    m_askedDevice = m_target.device;
    if (m_access == Read)
        m_readDevice = m_askedDevice;
    m_timer.start(isReading() ? kReplyMs : kWritePauseMs + (m_isReadBackDue ? 0 : m_batch.delayMs));
    emit requested(next.request); // within which all may be stopped
    if (!isRunning())
        return;
    if (!isReading() && !m_isReadBackDue) {
        table(Write)->setOutcome(next.row, RegisterTableModel::Written);
        report(next.line, RegisterTableModel::Written, {});
    }
    emit progressed(m_access);
}

void RegisterSession::sendReadBack()
{
    m_isReadBackDue = false;
    m_isAwaiting = true;
    m_timer.start(kReplyMs);
    emit requested({current().request.address, std::nullopt});
}

RegisterTableModel::Outcome RegisterSession::compared(int row, const Reply &reply) const
{
    quint32 value = 0;
    const bool isEqual = m_tables.at(m_access).row(row).valueNumber(&value) && reply.isValue(value);
    return isEqual ? RegisterTableModel::Answered : RegisterTableModel::Unequal;
}

void RegisterSession::endRequest(RegisterTableModel::Outcome outcome, const Reply &reply)
{
    const TableRequest &ended = current();
    if (outcome == RegisterTableModel::Answered && m_progress.task == Compare)
        outcome = compared(ended.row, reply);
    else if (outcome == RegisterTableModel::Answered && ended.request.value &&
             !reply.isValue(*ended.request.value))
        outcome = RegisterTableModel::Differs;
    m_isAwaiting = false;
    const bool isError = outcome != RegisterTableModel::Answered && outcome != RegisterTableModel::Unequal;
    m_isRetryDue = isError && m_tries <= m_batch.retries;
    m_timer.start(kReadPauseMs + (m_isRetryDue ? 0 : m_batch.delayMs));
    if (m_isRetryDue)
        return;
    endRow(outcome, reply);
    emit progressed(m_access);
    if (isError && m_batch.stopsAtError)
        stopTable(AtError);
}

// Without a value the old one goes: it was not read now.
void RegisterSession::endRow(RegisterTableModel::Outcome outcome, const Reply &reply)
{
    const TableRequest &ended = current();
    const bool isRead = m_access == Read && m_progress.task == Transfer;
    m_progress.unanswered += outcome == RegisterTableModel::Unanswered ? 1 : 0;
    m_progress.refused += outcome == RegisterTableModel::Refused ? 1 : 0;
    m_progress.differing +=
        outcome == RegisterTableModel::Differs || outcome == RegisterTableModel::Unequal ? 1 : 0;
    if (isRead)
        table(Read)->setValue(ended.row, reply.isGood ? reply.value : QString());
    table(m_access)->setOutcome(ended.row, outcome, reply.sender, isRead ? QString() : reply.value);
    report(ended.line, outcome, reply);
}

void RegisterSession::report(int line, RegisterTableModel::Outcome outcome, const Reply &reply)
{
    RegisterReport::Line &ended = m_report.line(line);
    ended.outcome = outcome;
    ended.board = reply.isGood ? reply.value : QString();
    ended.sender = reply.sender;
    ended.time = now();
}

// ---- replies

bool RegisterSession::isAwaited(const Reply &reply) const
{
    return m_isAwaiting && reply.device == m_askedDevice &&
           isSameAddress(current().request.address, reply.address);
}

// Without a pending request: of the device that was asked last, or would be now.
bool RegisterSession::isOfAsked(const Reply &reply) const
{
    if (m_single || isRunning())
        return (m_single && reply.device == m_single->device) ||
               (isRunning() && reply.device == m_askedDevice);
    return reply.device == m_target.device || reply.device == m_readDevice;
}

bool RegisterSession::addReply(const Reply &reply)
{
    const bool isHeard = isOfAsked(reply);
    if (isAwaited(reply))
        endRequest(reply.isGood ? RegisterTableModel::Answered : RegisterTableModel::Refused, reply);
    else if (m_single && m_single->isSent && reply.device == m_single->device &&
             isSameAddress(m_single->address, reply.address))
        endSingle(reply);
    else if (reply.isGood && reply.device == lateDevice())
        addLateReply(reply);
    return isHeard;
}

int RegisterSession::lateDevice() const
{
    return m_progress.task == Compare ? m_askedDevice : m_readDevice.value_or(m_target.device);
}

// A late reply, or one without a request. Values that were read are not
// overwritten, nor rows that will be read, nor any by a comparison.
void RegisterSession::addLateReply(const Reply &reply)
{
    const bool isComparison = m_progress.task == Compare;
    RegisterTableModel *const rows = table(isComparison ? m_access : Read);
    for (int row = 0; row < rows->rowCount(); ++row) {
        quint32 address = 0;
        if (!rows->row(row).addressNumber(&address) || !isSameAddress(address, reply.address))
            continue;
        const RegisterTableModel::Outcome outcome = rows->outcome(row);
        if (outcome == RegisterTableModel::Answered && rows->sender(row) != reply.sender)
            return; // a second board's answer to the same request
        if (outcome != RegisterTableModel::Unanswered &&
            (outcome != RegisterTableModel::NoOutcome || isRunning() || isComparison))
            continue;
        return endLateRow(row, reply);
    }
}

void RegisterSession::endLateRow(int row, const Reply &reply)
{
    const bool isComparison = m_progress.task == Compare;
    RegisterTableModel *const rows = table(isComparison ? m_access : Read);
    const bool wasUnanswered = rows->outcome(row) == RegisterTableModel::Unanswered;
    const RegisterTableModel::Outcome outcome =
        isComparison ? compared(row, reply) : RegisterTableModel::Answered;
    if (!isComparison)
        rows->setValue(row, reply.value);
    rows->setOutcome(row, outcome, reply.sender, isComparison ? reply.value : QString());
    if (!wasUnanswered || (m_access == Write && !isComparison) || m_progress.unanswered == 0)
        return;
    --m_progress.unanswered;
    m_progress.differing += outcome == RegisterTableModel::Unequal ? 1 : 0;
    for (const TableRequest &request : qAsConst(m_queue))
        if (request.row == row && isSameAddress(request.request.address, reply.address) &&
            m_report.line(request.line).outcome == RegisterTableModel::Unanswered)
            report(request.line, outcome, reply);
    emit progressed(m_access);
}
