#include "registerreport.h"

#include "csvtext.h"

namespace {

// QDateTime's own formatting takes ten times as long, which is felt with 10,000 rows.
QString timeText(const QDateTime &time)
{
    const QDate day = time.date();
    const QTime clock = time.time();
    return time.isValid()
               ? QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d.%03d", day.year(), day.month(), day.day(),
                                   clock.hour(), clock.minute(), clock.second(), clock.msec())
               : QString();
}

} // namespace

void RegisterReport::begin(Task task, int device, const QDateTime &now)
{
    *this = RegisterReport();
    m_task = task;
    m_device = device;
    m_begin = now;
}

int RegisterReport::add(int row, const QString &address, const QString &value)
{
    Line line;
    line.row = row;
    line.address = address;
    line.value = value;
    m_lines.append(line);
    return m_lines.size() - 1;
}

QString RegisterReport::result(const Line &line) const
{
    switch (line.outcome) {
    case RegisterTableModel::NoOutcome:
        return line.tries == 0 ? QStringLiteral("未执行") : QStringLiteral("未完成");
    case RegisterTableModel::Answered:
        return m_task == Read      ? QStringLiteral("已读取")
               : m_task == Compare ? QStringLiteral("相同")
                                   : QStringLiteral("回读一致");
    case RegisterTableModel::Written:
        return QStringLiteral("已发送，未校验");
    case RegisterTableModel::Refused:
        return QStringLiteral("开发板报告错误");
    case RegisterTableModel::Unanswered:
        return QStringLiteral("没有应答");
    case RegisterTableModel::NotSent:
        return QStringLiteral("未发送：地址或值与设置的长度不符");
    case RegisterTableModel::Differs:
        return QStringLiteral("回读不符");
    case RegisterTableModel::Unequal:
        return QStringLiteral("不同");
    }
    return {};
}

QByteArray RegisterReport::csv() const
{
    const QStringList tasks{QStringLiteral("读取"), QStringLiteral("写入"), QStringLiteral("写入并回读"),
                            QStringLiteral("比较")};
    QByteArray text("\xEF\xBB\xBF");
    text += CsvText::line({QStringLiteral("操作"), tasks.at(m_task), QStringLiteral("设备"),
                           QString::number(m_device + 1), QStringLiteral("开始"), timeText(m_begin),
                           QStringLiteral("结束"), m_end.isEmpty() ? QStringLiteral("已完成") : m_end});
    text += CsvText::line({QStringLiteral("行"), QStringLiteral("地址"), QStringLiteral("表中的值"),
                           QStringLiteral("板上的值"), QStringLiteral("结果"), QStringLiteral("次数"),
                           QStringLiteral("时间"), QStringLiteral("应答者")});
    for (const Line &line : m_lines)
        text += CsvText::line({QString::number(line.row + 1), line.address, line.value, line.board,
                               result(line), QString::number(line.tries), timeText(line.time), line.sender});
    return text;
}
