#include "pidtimetable.h"

#include "csvtext.h"

#include <QDateTime>
#include <QIODevice>

#include <charconv>

namespace {

constexpr qint64 kSecond = 1000000; // microseconds

QByteArray shortest(float value)
{
    QByteArray text;
    for (int digits = 1; digits <= 9; ++digits) { // nine distinguish all values
        text = QByteArray::number(static_cast<double>(value), 'g', digits);
        if (text.toFloat() == value)
            break;
    }
    return text;
}

const char *nameOf(PidEvent::Kind kind)
{
    switch (kind) {
    case PidEvent::Started:
        return "启动";
    case PidEvent::Stopped:
        return "停止";
    case PidEvent::Gains:
        return "增益";
    case PidEvent::Target:
        return "目标值";
    case PidEvent::Period:
        break;
    }
    return "周期";
}

} // namespace

PidTimeTable::PidTimeTable(const PidRecorder *recorder, const PidSessionInfo &info, QIODevice *device)
    : m_device(device)
    , m_range(recorder)
    , m_events(recorder->events())
    , m_piece("\xEF\xBB\xBF时间,秒,通道,名称,单位,类型,来源,实际值,目标值,差值,P,I,D,周期\r\n")
{
    if (recorder->hasOrigin())
        m_originUs = recorder->origin();
    for (int i = 0; i < PidRecorder::channels; ++i)
        m_channels.at(size_t(i)) = ',' + QByteArray::number(i + 1) + ',' +
                                   CsvText::field(info.names.at(size_t(i))) + ',' +
                                   CsvText::field(info.units.at(size_t(i))) + ',';
}

bool PidTimeTable::advance(int maxRows)
{
    while (!m_isComplete && maxRows-- > 0)
        m_isComplete = !addRow();
    if (m_error.isEmpty())
        m_error = m_range.error();
    if (m_error.isEmpty() && m_device->write(m_piece) != m_piece.size())
        m_error = QStringLiteral("文件无法写入");
    m_piece.resize(0); // keeps its memory
    return m_isComplete || !m_error.isEmpty();
}

int PidTimeTable::percent() const
{
    return m_isComplete || m_range.count() == 0 ? 100 : int(100 - 100 * m_range.pending() / m_range.count());
}

// An event before the samples of its time.
bool PidTimeTable::addRow()
{
    const int channel = m_range.earliest();
    if (m_event < m_events.size() && (channel < 0 || m_events[m_event].us <= m_range.peek(channel).us))
        addEvent(m_events[m_event++]);
    else if (channel >= 0)
        addSample(channel, m_range.take(channel));
    else
        return false;
    return true;
}

void PidTimeTable::addSample(int channel, const PidSample &sample)
{
    addTime(sample.us);
    m_piece += m_channels[size_t(channel)];
    m_piece += "采样,上报,";
    addNumber(sample.actual);
    m_piece += ',';
    addNumber(sample.target);
    m_piece += ',';
    addNumber(qint64(sample.actual) - sample.target);
    m_piece += ",,,,\r\n";
}

void PidTimeTable::addEvent(const PidEvent &event)
{
    addTime(event.us);
    m_piece += m_channels.at(size_t(event.channel));
    m_piece += nameOf(event.kind);
    m_piece += event.isReport ? ",上报,," : ",发送,,";
    const QByteArray value = QByteArray::number(event.value);
    if (event.kind == PidEvent::Target)
        m_piece += value;
    m_piece += ",,";
    if (event.kind == PidEvent::Gains)
        m_piece += shortest(event.gains.p) + ',' + shortest(event.gains.i) + ',' + shortest(event.gains.d);
    else
        m_piece += ",,";
    m_piece += ',';
    if (event.kind == PidEvent::Period)
        m_piece += value;
    m_piece += "\r\n";
}

void PidTimeTable::addTime(qint64 us)
{
    const auto addFraction = [this](qint64 part) {
        char digits[7] = {'.'};
        for (int i = 6; i > 0; --i, part /= 10)
            digits[i] = char('0' + part % 10);
        m_piece.append(digits, sizeof digits);
    };
    const qint64 second = us / kSecond;
    if (m_second != second) {
        m_second = second;
        m_secondText =
            QDateTime::fromSecsSinceEpoch(second).toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")).toLatin1();
    }
    m_piece += m_secondText;
    addFraction(us % kSecond);
    m_piece += ',';
    if (!m_originUs)
        m_originUs = us;
    const qint64 since = us - *m_originUs;
    if (since < 0)
        m_piece += '-';
    addNumber(qAbs(since) / kSecond);
    addFraction(qAbs(since) % kSecond);
}

void PidTimeTable::addNumber(qint64 value)
{
    char digits[20];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    m_piece.append(digits, int(end - digits));
}
