#include "sendoptions.h"

#include "commandpage.h"
#include "fieldmemory.h"
#include "qtmessagetip.h"
#include "qtsendboxwidget.h"
#include "sendformatbar.h"
#include "singlesendpage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QRadioButton>

SendOptions::SendOptions(QtSendBoxWidget *box, QWidget *parent)
    : FormGroup(QStringLiteral("发送区设置"), parent)
    , m_box(box)
    , m_page(new QComboBox(this))
    , m_text(new QRadioButton(QStringLiteral("字符串数据发送"), this))
    , m_hex(new QRadioButton(QStringLiteral("十六进制数据发送"), this))
    , m_newline(new QCheckBox(QStringLiteral("发送新行"), this))
    , m_auto(new QCheckBox(QStringLiteral("自动发送"), this))
    , m_interval(new QLineEdit(QString::number(box->autoInterval()), this))
{
    buildUi();
    connect(m_page, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this](int index) { emit pageChosen(m_page->itemData(index).toInt()); });
    connect(m_hex, &QRadioButton::toggled, m_box, &QtSendBoxWidget::setHexSend);
    connect(m_newline, &QCheckBox::toggled, m_box, &QtSendBoxWidget::setNewline);
    connect(m_auto, &QCheckBox::toggled, m_box, &QtSendBoxWidget::setAutoSend);
    connect(m_interval, &QLineEdit::editingFinished, this, &SendOptions::intervalEdited);
    connect(m_box, &QtSendBoxWidget::newlineWanted, m_newline, &QCheckBox::setChecked);
    connect(m_box, &QtSendBoxWidget::hexWanted, this,
            [this](bool isHex) { (isHex ? m_hex : m_text)->setChecked(true); });
    connect(m_box, &QtSendBoxWidget::autoSendStopped, m_auto, [this] { m_auto->setChecked(false); });
}

void SendOptions::buildUi()
{
    m_page->setObjectName(QStringLiteral("comboSendPage"));
    m_text->setObjectName(QStringLiteral("radioSendText"));
    m_hex->setObjectName(QStringLiteral("radioSendHex"));
    m_newline->setObjectName(QStringLiteral("checkNewline"));
    m_auto->setObjectName(QStringLiteral("checkAutoSend"));
    m_interval->setObjectName(QStringLiteral("editAutoInterval"));
    m_page->addItem(QStringLiteral("单项发送"), QtSendBoxWidget::SinglePage);
    m_page->addItem(QStringLiteral("多项发送"), QtSendBoxWidget::MultiPage);
    if (m_box->offersFiles())
        m_page->addItem(QStringLiteral("发送文件"), QtSendBoxWidget::FilePage);
    m_page->addItem(QStringLiteral("命令列表"), QtSendBoxWidget::CommandsPage);
    m_text->setChecked(true);
    m_newline->setToolTip(QStringLiteral("在数据末尾自动追加换行符"));
    m_auto->setToolTip(QStringLiteral("按周期发送编辑区的数据"));
    m_interval->setToolTip(QStringLiteral("自动发送周期，单位毫秒，不小于10"));

    QHBoxLayout *pages = addLine();
    addTo(pages, QStringLiteral("发送方式"), m_page);
    pages->addWidget(m_newline);
    QHBoxLayout *kinds = addLine();
    kinds->addWidget(m_text);
    kinds->addWidget(m_hex, 1);
    QHBoxLayout *periods = addLine();
    periods->addWidget(m_auto);
    addTo(periods, QStringLiteral("自动发送周期(ms)"), m_interval);
    setTabOrder(m_page, m_newline);
}

QWidget *SendOptions::lastField() const
{
    return m_interval;
}

void SendOptions::load()
{
    m_box->singlePage()->formatBar()->load();
    m_box->commandPage()->load();
}

void SendOptions::remember(FieldMemory *memory, Settings::AreaChoices *choices, Settings::SendChoices *single)
{
    m_box->singlePage()->formatBar()->remember(single);
    m_box->commandPage()->remember(single);
    memory->add(m_page, &choices->sendPage);
    memory->add(m_text, m_hex, &choices->hexSend);
    memory->add(m_newline, &choices->newline);
    m_choices = choices;
    m_box->setAutoInterval(choices->autoIntervalMs);
    m_interval->setText(QString::number(m_box->autoInterval()));
}

void SendOptions::applyInterval()
{
    bool isNumber = false;
    const int milliseconds = m_interval->text().trimmed().toInt(&isNumber);
    if (isNumber && m_box->setAutoInterval(milliseconds)) {
        if (m_choices)
            m_choices->autoIntervalMs.change(milliseconds);
        return;
    }
    QtMessageTip::showBelow(
        m_interval, QStringLiteral("自动发送周期不能小于%1毫秒！").arg(QtSendBoxWidget::minAutoInterval));
    m_interval->setText(QString::number(m_box->autoInterval()));
}
