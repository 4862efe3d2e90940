#include "recvoptions.h"

#include "fieldmemory.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

RecvOptions::RecvOptions(QWidget *parent, Kind kind)
    : FormGroup(QStringLiteral("接收区设置"), parent)
    , m_text(new QRadioButton(QStringLiteral("字符串显示"), this))
    , m_hex(new QRadioButton(QStringLiteral("十六进制显示"), this))
    , m_stop(new QCheckBox(QStringLiteral("停止显示"), this))
    , m_log(new QCheckBox(QStringLiteral("日志模式"), this))
    , m_stamp(new QCheckBox(QStringLiteral("显示增加时间戳"), this))
    , m_quiet(new QSpinBox(this))
{
    m_text->setObjectName(QStringLiteral("radioRecvText"));
    m_hex->setObjectName(QStringLiteral("radioRecvHex"));
    m_stop->setObjectName(QStringLiteral("checkStopShow"));
    m_log->setObjectName(QStringLiteral("checkLogMode"));
    m_stamp->setObjectName(QStringLiteral("checkTimeStamp"));
    m_quiet->setObjectName(QStringLiteral("spinQuietTime"));
    m_quiet->setRange(1, 1000);
    m_quiet->setValue(10);
    m_quiet->setToolTip(QStringLiteral("线路空闲超过该时间后，已收到的数据作为一包显示"));
    m_text->setChecked(true);
    m_stop->setToolTip(QStringLiteral("继续接收、计数和记录，但不显示"));
    m_log->setToolTip(QStringLiteral("只显示最近的20480字节，适合长时间观察日志；保存时仍是全部内容"));
    m_stamp->setToolTip(QStringLiteral("在每次接收的数据前显示接收时间"));

    auto *clear = new QPushButton(QStringLiteral("清空接收区"), this);
    clear->setObjectName(QStringLiteral("btnClearRecv"));
    clear->setToolTip(QStringLiteral("清空显示，已收到的原始数据仍可保存（Ctrl+L）"));
    auto *save = new QPushButton(QStringLiteral("保存到文件"), this);
    save->setObjectName(QStringLiteral("btnSaveRecv"));
    save->setToolTip(QStringLiteral("将接收区数据保存到文件"));
    connect(m_quiet, QOverload<int>::of(&QSpinBox::valueChanged), this, &RecvOptions::delayChanged);
    connect(m_stop, &QCheckBox::toggled, this, &RecvOptions::stopShowChanged);
    connect(clear, &QPushButton::clicked, this, &RecvOptions::clearClicked);
    connect(save, &QPushButton::clicked, this, &RecvOptions::saveClicked);

    addPair(m_text, m_hex);
    addPair(m_stamp, m_stop);
    QHBoxLayout *streams = addLine();
    streams->addWidget(m_log, 1);
    QLabel *quietLabel = addTo(streams, QStringLiteral("断帧间隔(ms)"), m_quiet);
    for (QWidget *ofStreams :
         {static_cast<QWidget *>(m_log), static_cast<QWidget *>(m_quiet), static_cast<QWidget *>(quietLabel)})
        ofStreams->setVisible(kind == Stream);
    addPair(clear, save);
}

void RecvOptions::remember(FieldMemory *memory, Settings::AreaChoices *choices)
{
    memory->add(m_text, m_hex, &choices->hexShow);
    memory->add(m_stamp, &choices->timeStamp);
    if (m_log->isHidden())
        return;
    memory->add(m_log, &choices->logMode);
    memory->add(m_quiet, &choices->quietMs);
}

bool RecvOptions::hexShow() const
{
    return m_hex->isChecked();
}

bool RecvOptions::stopShow() const
{
    return m_stop->isChecked();
}

void RecvOptions::resumeShow()
{
    m_stop->setChecked(false);
}

bool RecvOptions::logMode() const
{
    return m_log->isChecked();
}

bool RecvOptions::timeStamp() const
{
    return m_stamp->isChecked();
}

int RecvOptions::quietTime() const
{
    return m_quiet->value();
}
