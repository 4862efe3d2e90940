#include "pidoperations.h"

#include "buttonrole.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVariant>

PidOperations::PidOperations(QWidget *parent)
    : QWidget(parent)
    , m_start(new QPushButton(QStringLiteral("启动"), this))
    , m_reset(new QPushButton(QStringLiteral("复位"), this))
    , m_stopShow(new QCheckBox(QStringLiteral("停止显示"), this))
    , m_clear(new QPushButton(QStringLiteral("清空显示"), this))
    , m_export(new QPushButton(QStringLiteral("导出数据"), this))
    , m_picture(new QPushButton(QStringLiteral("保存图片"), this))
{
    m_start->setObjectName(QStringLiteral("btnPidStart"));
    m_reset->setObjectName(QStringLiteral("btnPidReset"));
    m_stopShow->setObjectName(QStringLiteral("checkPidStopShow"));
    m_clear->setObjectName(QStringLiteral("btnPidClear"));
    m_export->setObjectName(QStringLiteral("btnPidExport"));
    m_picture->setObjectName(QStringLiteral("btnPidPicture"));

    m_stopShow->setToolTip(QStringLiteral("勾选期间收到的实际值不显示在曲线上，仍保存在会话记录中"));

    m_clear->setToolTip(QStringLiteral("只清空显示，会话记录保留（“视图”菜单中可清空记录）"));

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(new QLabel(QStringLiteral("操作"), this));
    for (QWidget *part : std::initializer_list<QWidget *>{m_start, m_reset, m_stopShow})
        row->addWidget(part);
    row->addStretch();
    for (QWidget *part : {m_clear, m_export, m_picture})
        row->addWidget(part);
}

bool PidOperations::isIdle() const
{
    return m_start->text() == QStringLiteral("启动");
}

void PidOperations::setOpenState(bool open)
{
    ButtonRole::setPrimary(m_start, open);
}

void PidOperations::setIdle(bool idle)
{
    m_start->setText(idle ? QStringLiteral("启动") : QStringLiteral("停止"));
}
