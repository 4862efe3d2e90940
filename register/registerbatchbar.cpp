#include "registerbatchbar.h"

#include "settings.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSpinBox>

RegisterBatchBar::RegisterBatchBar(QWidget *parent)
    : QWidget(parent)
    , m_retries(new QSpinBox(this))
    , m_delay(new QSpinBox(this))
    , m_stops(new QCheckBox(QStringLiteral("遇错停止"), this))
{
    m_retries->setObjectName(QStringLiteral("spinBatchRetries"));
    m_retries->setRange(0, 10);
    m_retries->setToolTip(QStringLiteral("没有应答或出错的行再试的次数；写入只有回读校验时才重试"));
    m_delay->setObjectName(QStringLiteral("spinBatchDelay"));
    m_delay->setRange(0, 10000);
    m_delay->setToolTip(QStringLiteral("每行之后的等待时间"));
    m_stops->setObjectName(QStringLiteral("checkBatchStops"));
    m_stops->setToolTip(QStringLiteral("第一个出错的行之后不再继续"));

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);
    const auto addField = [this, row](const QString &text, QWidget *field) {
        auto *label = new QLabel(text, this);
        label->setBuddy(field);
        row->addWidget(label);
        row->addWidget(field);
        row->addSpacing(8);
    };
    addField(QStringLiteral("重试次数"), m_retries);
    addField(QStringLiteral("每行延时(ms)"), m_delay);
    row->addWidget(m_stops);
    row->addStretch();

    const auto valueChanged = QOverload<int>::of(&QSpinBox::valueChanged);
    connect(m_retries, valueChanged, this,
            [](int retries) { Settings::instance().cameraPage.batchRetries.set(retries); });
    connect(m_delay, valueChanged, this,
            [](int delay) { Settings::instance().cameraPage.batchDelay.set(delay); });
    connect(m_stops, &QCheckBox::toggled, this,
            [](bool stops) { Settings::instance().cameraPage.batchStops.set(stops); });
}

void RegisterBatchBar::showEvent(QShowEvent *event)
{
    const Settings::CameraPage &settings = Settings::instance().cameraPage;
    m_retries->setValue(settings.batchRetries);
    m_delay->setValue(settings.batchDelay);
    m_stops->setChecked(settings.batchStops);
    QWidget::showEvent(event);
}
