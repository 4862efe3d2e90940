#include "camerastatusrow.h"

#include "stateindicator.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVariant>

namespace {

QString rateText(double bytesPerSecond)
{
    if (bytesPerSecond < 1000)
        return QStringLiteral("%1 B/s").arg(bytesPerSecond, 0, 'f', 0);
    if (bytesPerSecond < 1e6)
        return QStringLiteral("%1 KB/s").arg(bytesPerSecond / 1e3, 0, 'f', 1);
    return QStringLiteral("%1 MB/s").arg(bytesPerSecond / 1e6, 0, 'f', 2);
}

} // namespace

CameraStatusRow::CameraStatusRow(QWidget *parent)
    : QWidget(parent)
    , m_row(new QHBoxLayout(this))
    , m_tools(new QHBoxLayout)
    , m_fold(new QPushButton(QStringLiteral("隐藏配置界面"), this))
    , m_fps(new QLabel(this))
    , m_rate(new QLabel(this))
    , m_number(new QLabel(this))
    , m_skipped(new QLabel(this))
    , m_error(new QLabel(this))
    , m_state(new StateIndicator(this))
{
    m_fold->setObjectName(QStringLiteral("btnFold"));
    m_fps->setObjectName(QStringLiteral("labelFrameRate"));
    m_rate->setObjectName(QStringLiteral("labelDataRate"));
    m_number->setObjectName(QStringLiteral("labelFrameNumber"));
    m_skipped->setObjectName(QStringLiteral("labelSkipped"));
    m_error->setObjectName(QStringLiteral("labelImageError"));
    m_error->setProperty("kind", QStringLiteral("error"));

    m_row->setContentsMargins(0, 0, 0, 0);
    m_row->setSpacing(12);
    m_tools->setSpacing(4);
    m_tools->addWidget(m_fold);
    m_row->addLayout(m_tools);
    m_row->addStretch();
    for (QLabel *label : {m_error, m_skipped, m_fps, m_rate, m_number})
        m_row->addWidget(label);
    m_row->addWidget(m_state);
    showRates(0, 0);
    showFrames(0, {});
    showErrors(0, {});
}

void CameraStatusRow::addTool(QWidget *tool)
{
    setTabOrder(m_tools->itemAt(m_tools->count() - 1)->widget(), tool);
    m_tools->addWidget(tool);
}

void CameraStatusRow::showRates(double framesPerSecond, double bytesPerSecond)
{
    m_fps->setText(QStringLiteral("接收帧率: %1 FPS").arg(framesPerSecond, 0, 'f', 1));
    m_rate->setText(QStringLiteral("接收速率: %1").arg(rateText(bytesPerSecond)));
}

void CameraStatusRow::showFrames(qint64 number, const CameraLosses &losses)
{
    m_number->setText(QStringLiteral("帧编号: %1").arg(number));
    const qint64 frames = losses.skipped + losses.unusable + losses.partial;
    m_skipped->setText(QStringLiteral("未显示: %1").arg(frames));
    m_skipped->setToolTip(QStringLiteral("因来不及显示而跳过的帧：%1\n无法解码的帧：%2\n"
                                         "不完整的帧：%3\n丢弃的无效数据：%4 字节")
                              .arg(losses.skipped)
                              .arg(losses.unusable)
                              .arg(losses.partial)
                              .arg(losses.bytes));
    m_skipped->setVisible(frames + losses.bytes > 0);
}

void CameraStatusRow::showErrors(qint64 count, const QString &lastReason)
{
    m_error->setText(QStringLiteral("数据错误: %1").arg(count));
    m_error->setToolTip(lastReason);
    m_error->setVisible(count > 0);
}
