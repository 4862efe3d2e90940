#include "pidrunningbar.h"

#include "pidruns.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

PidRunningBar::PidRunningBar(const PidRuns *runs, QWidget *parent)
    : QWidget(parent)
    , m_runs(runs)
    , m_stopAll(new QPushButton(QStringLiteral("全部停止 (Esc)"), this))
{
    setObjectName(QStringLiteral("pidRunningBar"));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(new QLabel(QStringLiteral("正在运行"), this));
    for (int channel = 0; channel < channels; ++channel) {
        auto *stop = new QPushButton(QStringLiteral("停止CH%1").arg(channel + 1), this);
        stop->setObjectName(QStringLiteral("btnStopChannel%1").arg(channel + 1));
        m_stop.at(size_t(channel)) = stop;
        row->addWidget(stop);
        connect(stop, &QPushButton::clicked, this, [this, channel] { emit stopRequested(channel); });
    }
    row->addStretch();
    row->addWidget(m_stopAll);
    m_stopAll->setObjectName(QStringLiteral("btnStopAllChannels"));
    // On the bar's parent, which is the page's work area, and only while it is shown.
    m_stopAll->setShortcut(QKeySequence(Qt::Key_Escape));
    connect(m_stopAll, &QPushButton::clicked, this, &PidRunningBar::stopAllRequested);
    connect(runs, &PidRuns::runningChanged, this, &PidRunningBar::showRunning);
    showRunning();
}

void PidRunningBar::showRunning()
{
    bool isAny = false;
    for (int channel = 0; channel < channels; ++channel) {
        const bool runs = m_runs->isRunning(channel);
        m_stop.at(size_t(channel))->setVisible(runs);
        isAny = isAny || runs;
    }
    setVisible(isAny);
}
