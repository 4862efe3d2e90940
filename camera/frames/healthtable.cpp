#include "healthtable.h"

#include "csvtext.h"

namespace {

constexpr int kReceivedRate = 8; // columns, of the current one
constexpr int kShownRate = 11;

const auto kNone = QStringLiteral("-");

QString device(int device)
{
    return device == CameraHealthRow::noDevice ? kNone : QString::number(device + 1);
}

QString rate(double value, bool isKnown)
{
    return isKnown ? QString::number(value, 'f', 1) : kNone;
}

QStringList rates(const CameraRate &measured)
{
    return {rate(measured.now, measured.isKnown), rate(measured.min, measured.isKnown),
            rate(measured.max, measured.isKnown)};
}

QStringList countsRow(const QString &name, const CameraHealthRow &row, qint64 nowMs)
{
    QStringList texts{name, device(row.device)};
    for (const qint64 count :
         {row.good, row.wrongChecksum, row.cutShort, row.skipped, row.undecodable, row.lostBytes})
        texts += QString::number(count);
    texts += rates(row.received);
    texts += rates(row.shown);
    texts += row.lastFrameMs < 0 ? kNone : QString::number(row.longestGapMs);
    texts += row.lastFrameMs < 0 ? kNone : QString::number(nowMs - row.lastFrameMs);
    return texts;
}

QString kindText(CameraFault::Kind kind)
{
    switch (kind) {
    case CameraFault::WrongChecksum:
        return QStringLiteral("校验错误");
    case CameraFault::CutShort:
        return QStringLiteral("帧不完整");
    case CameraFault::UnknownBytes:
        return QStringLiteral("无法识别的数据");
    case CameraFault::Undecodable:
        return QStringLiteral("无法解码");
    }
    return {};
}

QByteArray lines(const QVector<QStringList> &rows)
{
    QByteArray text;
    for (const QStringList &row : rows)
        text += CsvText::line(row);
    return text;
}

} // namespace

namespace HealthTable {

QVector<QStringList> counts(const CameraHealth &health)
{
    QVector<QStringList> rows{
        {QStringLiteral("发送方"), QStringLiteral("设备"), QStringLiteral("正常"), QStringLiteral("校验错误"),
         QStringLiteral("不完整"), QStringLiteral("跳过"), QStringLiteral("无法解码"),
         QStringLiteral("丢弃(字节)"), QStringLiteral("接收(帧/秒)"), QStringLiteral("接收最小"),
         QStringLiteral("接收最大"), QStringLiteral("显示(帧/秒)"), QStringLiteral("显示最小"),
         QStringLiteral("显示最大"), QStringLiteral("最长间隔(ms)"), QStringLiteral("距上一帧(ms)")}};
    rows += countsRow(QStringLiteral("合计"), health.total(), health.now());
    for (const CameraHealthRow &row : health.rows())
        rows += countsRow(row.sender, row, health.now());
    return rows;
}

QVector<QStringList> summary(const CameraHealth &health)
{
    QVector<QStringList> rows = counts(health);
    for (QStringList &row : rows) {
        for (const int at : {kShownRate, kReceivedRate}) { // the later one first
            const QString max = row.takeAt(at + 2);
            const QString min = row.takeAt(at + 1);
            if (&row != &rows.front() && min != kNone)
                row[at] += QStringLiteral(" (%1~%2)").arg(min, max);
        }
    }
    return rows;
}

QVector<QStringList> faults(const CameraHealth &health, const QDateTime &now)
{
    QVector<QStringList> rows{{QStringLiteral("时间"), QStringLiteral("错误"), QStringLiteral("发送方"),
                               QStringLiteral("设备"), QStringLiteral("偏移(字节)"),
                               QStringLiteral("长度(字节)"), QStringLiteral("开头的数据(HEX)")}};
    for (const CameraFault &fault : health.faults())
        rows += QStringList{now.addMSecs(fault.atMs - health.now()).toString(QStringLiteral("HH:mm:ss.zzz")),
                            kindText(fault.kind),
                            fault.sender,
                            device(fault.device),
                            QString::number(fault.offset),
                            QString::number(fault.bytes),
                            QString::fromLatin1(fault.head.toHex(' ').toUpper())};
    return rows;
}

QByteArray csv(const CameraHealth &health, const QDateTime &now)
{
    return "\xEF\xBB\xBF" + lines(counts(health)) + "\r\n" + lines(faults(health, now));
}

} // namespace HealthTable
