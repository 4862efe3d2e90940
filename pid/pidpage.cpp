// What PidDebugWidget is made of.

#include "formpanel.h"
#include "pidchart.h"
#include "pidcurvelist.h"
#include "piddebugwidget.h"
#include "pidoperations.h"
#include "pidpanel.h"
#include "pidplot.h"
#include "pidportpanel.h"
#include "pidsaving.h"
#include "qtserialport.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
}

void PidDebugWidget::buildUi()
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 8, 6);
    row->setSpacing(8);
    row->addWidget(buildPanel());
    row->addWidget(buildWorkArea(), 1);
    setPageKeys(m_portPanel->openButton(), m_chart->foldButton());
}

QWidget *PidDebugWidget::buildPanel()
{
    m_panel = new FormPanel(this);
    m_panel->setObjectName(QStringLiteral("pidConfigPanel"));
    m_portPanel = new PidPortPanel(m_panel);
    m_pid = new PidPanel(m_panel);
    m_panel->addWidget(m_portPanel);
    m_panel->addWidget(m_pid);
    return m_panel;
}

QWidget *PidDebugWidget::buildWorkArea()
{
    auto *area = new QWidget(this);
    m_chart = new PidChart(area);
    m_saving = new PidSaving(m_chart, this);
    m_operations = new PidOperations(area);
    auto *column = new QVBoxLayout(area);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addWidget(m_chart, 1);
    column->addWidget(m_operations);
    return area;
}

void PidDebugWidget::connectParts()
{
    connect(m_link, &QtSerialPort::bytesRead, this, &PidDebugWidget::SltRecvFromSerialport);
    // Queued: the report comes from within the port's own reading.
    connect(m_link, &QtSerialPort::hungUp, this, &PidDebugWidget::portVanished, Qt::QueuedConnection);
    connect(m_link, &QtSerialPort::failed, this,
            [this](const QString &reason) { notify(Notice::error(reason)); });
    connect(&m_receiver, &PidReceiver::lengthGivenUp, this,
            [this] { notify(Notice::error(QStringLiteral("收到长度异常的数据帧，已跳过！"))); });
    connect(&m_receiver, &PidReceiver::blocked, this, [this] {
        notify(Notice::error(QStringLiteral("收到长度异常的数据帧，后续数据无法解析，请重新打开串口！")));
    });
    connect(m_portPanel, &PidPortPanel::openClicked, this, &PidDebugWidget::SltOpenSerialport);

    connect(m_pid, &PidPanel::refused, this,
            [this](const QString &reason) { notify(Notice::error(reason)); });
    connect(m_pid->channelBox(), QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &PidDebugWidget::SltComboPidChanged);
    connect(m_pid->sendGains(), &QPushButton::clicked, this, &PidDebugWidget::SltBtnSendPidClicked);
    connect(m_pid->sendTarget(), &QPushButton::clicked, this, &PidDebugWidget::SltBtnSendValueClicked);
    connect(m_pid->sendPeriod(), &QPushButton::clicked, this, &PidDebugWidget::SltBtnSendIntervalClicked);
    for (const PidField *field : m_pid->gainFields())
        connect(field, &QLineEdit::returnPressed, this, &PidDebugWidget::SltBtnSendPidClicked);
    connect(m_pid->targetField(), &QLineEdit::returnPressed, this, &PidDebugWidget::SltBtnSendValueClicked);

    connect(m_operations->startButton(), &QPushButton::clicked, this, &PidDebugWidget::SltBtnStartClicked);
    connect(m_operations->resetButton(), &QPushButton::clicked, this, &PidDebugWidget::SltBtnResetClicked);
    connect(m_operations->clearButton(), &QPushButton::clicked, this, &PidDebugWidget::SltBtnClearClicked);
    connect(m_operations->exportButton(), &QPushButton::clicked, this, &PidDebugWidget::SltBtnExportClicked);
    connect(m_operations->pictureButton(), &QPushButton::clicked, m_saving, &PidSaving::savePicture);
    connect(m_saving, &PidSaving::notify, this, &PidDebugWidget::notify);
    connect(m_chart->fitAllBox(), &QCheckBox::toggled, this, &PidDebugWidget::rememberFitAll);
    connect(m_chart->zoomBox(), QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &PidDebugWidget::SltPoltScale);

    connect(m_chart->plot(), &QCustomPlot::mousePress, this, &PidDebugWidget::SltRightButtonPoltScale);
    connect(m_chart->plot(), &QCustomPlot::mouseMove, this, &PidDebugWidget::SltPlotMoveEvent);
    connect(m_chart->curveList(), &PidCurveList::signalGraphClicked, this, &PidDebugWidget::SltGraphClicked);
    connect(m_chart->foldButton(), &QPushButton::clicked, this, &PidDebugWidget::fold);
}

void PidDebugWidget::setPlotStyle(const QString &style)
{
    m_plotStyle = style;
    m_chart->plot()->setPlotStyle(style);
}

void PidDebugWidget::fold()
{
    const bool hide = m_panel->isVisibleTo(this);
    m_panel->setVisible(!hide);
    m_chart->foldButton()->setText(hide ? QStringLiteral("显示配置界面") : QStringLiteral("隐藏配置界面"));
}
