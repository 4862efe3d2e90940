#include "commandsequence.h"

#include "csvtext.h"
#include "escapes.h"
#include "textcodec.h"

#include <QDateTime>

namespace {

QString outcomeText(const CommandSequence::Entry &entry)
{
    switch (entry.outcome) {
    case CommandSequence::Outcome::Sent:
        return QStringLiteral("已发送");
    case CommandSequence::Outcome::Answered:
        return QStringLiteral("已应答");
    case CommandSequence::Outcome::NoAnswer:
        return QStringLiteral("无应答");
    case CommandSequence::Outcome::Failed:
        return QStringLiteral("失败：%1").arg(entry.fault);
    }
    return {};
}

} // namespace

void CommandSequence::start(const QVector<Row> &rows, int rounds, int codecIndex, qint64 nowUs)
{
    m_rows = rows;
    m_rounds = rounds;
    m_codecIndex = codecIndex;
    m_isRunning = !rows.isEmpty();
    m_isPaused = false;
    m_state = State::Due;
    m_index = 0;
    m_round = 1;
    m_attempt = 0;
    m_dueUs = nowUs;
    m_sent = 0;
    m_fault.clear();
    m_report.clear();
}

void CommandSequence::stop()
{
    if (m_isRunning)
        end(QString());
}

void CommandSequence::end(const QString &fault)
{
    m_isRunning = false;
    m_fault = fault;
    m_received.clear();
}

QByteArray CommandSequence::due(qint64 nowUs)
{
    if (!m_isRunning || m_isPaused || m_state == State::Sending || nowUs < m_dueUs)
        return {};
    if (m_state == State::Awaiting)
        handleNoAnswer(nowUs);
    else if (m_state == State::Delaying)
        next(m_dueUs);
    if (!m_isRunning || m_state != State::Due || nowUs < m_dueUs)
        return {};
    m_dueUs = qMax(m_dueUs, nowUs - maxCatchUpUs);
    QString fault;
    const QByteArray bytes = command().bytes(m_codecIndex, &fault);
    m_awaited.clear();
    m_expression = LineMatcher();
    if (fault.isEmpty() && !command().answer.isEmpty()) {
        if (command().isExpression) {
            m_expression = LineMatcher({command().answer, true, false, true});
            fault = m_expression.fault();
        } else {
            QString wrong;
            m_awaited = Escapes::encode(command().answer, m_codecIndex, &wrong);
            if (!wrong.isEmpty())
                fault = QStringLiteral("应答中的转义“%1”无效").arg(wrong);
        }
    }
    if (!fault.isEmpty()) {
        m_sentUs = nowUs;
        handleSent(false, fault, nowUs);
        return {};
    }
    m_received.clear();
    m_state = State::Sending;
    m_sentUs = nowUs;
    return bytes;
}

void CommandSequence::handleSent(bool isAccepted, const QString &reason, qint64 nowUs)
{
    if (!isAccepted) {
        m_report.push_back({nowUs, row(), command().name, m_round, Outcome::Failed, 0, reason});
        end(QStringLiteral("第%1条命令未发送：%2").arg(row() + 1).arg(reason));
        return;
    }
    ++m_sent;
    if (command().answer.isEmpty()) {
        finish(Outcome::Sent, 0, m_dueUs);
        return;
    }
    if (m_state != State::Sending)
        return; // the answer came from within the sending
    m_state = State::Awaiting;
    m_dueUs = nowUs + command().timeoutMs * 1000LL;
}

void CommandSequence::receive(const QByteArray &bytes, qint64 arrivalUs)
{
    if (!m_isRunning || m_isPaused || (m_state != State::Sending && m_state != State::Awaiting) ||
        command().answer.isEmpty())
        return;
    m_received += bytes;
    if (m_awaited.isEmpty() ? hasExpression() : hasText())
        finish(Outcome::Answered, qMax<qint64>(0, arrivalUs - m_sentUs), arrivalUs);
}

// Keeps what the next bytes may complete.
bool CommandSequence::hasText()
{
    if (m_received.contains(m_awaited))
        return true;
    m_received = m_received.right(m_awaited.size() - 1);
    return false;
}

// A match lies in one line; of an endless one the last part is looked at.
bool CommandSequence::hasExpression()
{
    QVector<LineMatcher::Range> found;
    m_expression.find(decoded(m_received), &found);
    if (!found.isEmpty())
        return true;
    m_received = m_received.mid(m_received.lastIndexOf('\n') + 1).right(maxLine);
    return false;
}

QString CommandSequence::decoded(const QByteArray &bytes) const
{
    return TextCodec::decode(bytes, m_codecIndex);
}

// fromUs: when the delay behind it begins.
void CommandSequence::finish(Outcome outcome, qint64 answerUs, qint64 fromUs)
{
    m_report.push_back({m_sentUs, row(), command().name, m_round, outcome, answerUs, {}});
    if (m_report.size() > maxReport)
        m_report.pop_front();
    m_received.clear();
    m_state = State::Delaying;
    m_dueUs = fromUs + command().delayMs * 1000LL;
}

void CommandSequence::handleNoAnswer(qint64 nowUs)
{
    const Command &present = command();
    finish(Outcome::NoAnswer, nowUs - m_sentUs, nowUs);
    if (present.otherwise == Command::GoOn)
        return;
    if (present.otherwise == Command::Repeat && m_attempt < present.repeats) {
        ++m_attempt;
        m_state = State::Due;
        m_dueUs = nowUs;
        return;
    }
    end(QStringLiteral("第%1条命令没有应答").arg(row() + 1));
}

void CommandSequence::next(qint64 nowUs)
{
    m_attempt = 0;
    m_state = State::Due;
    m_dueUs = nowUs;
    if (++m_index < m_rows.size())
        return;
    m_index = 0;
    if (m_rounds > 0 && m_round >= m_rounds)
        end(QString());
    else
        ++m_round;
}

qint64 CommandSequence::nextUs() const
{
    return m_isRunning && !m_isPaused && m_state != State::Sending ? m_dueUs : -1;
}

void CommandSequence::setPaused(bool isPaused, qint64 nowUs)
{
    if (!m_isRunning || m_isPaused == isPaused)
        return;
    m_isPaused = isPaused;
    if (isPaused)
        return;
    if (m_state == State::Awaiting || m_state == State::Sending)
        m_state = State::Due;
    m_dueUs = nowUs;
}

int CommandSequence::row() const
{
    return m_index < m_rows.size() ? m_rows.at(m_index).number : -1;
}

QByteArray CommandSequence::reportCsv(qint64 startUs, qint64 startMsSinceEpoch) const
{
    QVector<QStringList> rows{{QStringLiteral("时间"), QStringLiteral("序号"), QStringLiteral("名称"),
                               QStringLiteral("轮次"), QStringLiteral("结果"), QStringLiteral("应答ms")}};
    for (const Entry &entry : m_report) {
        const QDateTime time =
            QDateTime::fromMSecsSinceEpoch(startMsSinceEpoch + (entry.timeUs - startUs) / 1000);
        rows.append({time.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz")), QString::number(entry.row + 1),
                     entry.name, QString::number(entry.round), outcomeText(entry),
                     entry.outcome == Outcome::Answered
                         ? QString::number(double(entry.answerUs) / 1000, 'f', 1)
                         : QString()});
    }
    return "\xEF\xBB\xBF" + CsvText::write(rows).toUtf8();
}
