#include "qtstyledialog.h"

#include "contrast.h"
#include "fonts.h"
#include "qtcolorpanel.h"
#include "settings.h"
#include "skin.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTabWidget>
#include <QVBoxLayout>
#include <QVariant>

namespace {

// The colors accepted in this run, newest first. The panel shows as many as it has
// room for.
QVector<QColor> &recentColors()
{
    static QVector<QColor> colors;
    return colors;
}

void remember(const QColor &color)
{
    recentColors().removeAll(color);
    recentColors().prepend(color);
}

} // namespace

QtStyleDialog::QtStyleDialog(Area area, QWidget *parent)
    : QtFramelessDialog(area == ReceiveArea ? QStringLiteral("接收区设置") : QStringLiteral("发送区设置"),
                        parent)
    , m_area(area)
    , m_background(new QtColorPanel(this))
    , m_text(new QtColorPanel(this))
    , m_tabs(new QTabWidget(this))
    , m_follow(new QCheckBox(QStringLiteral("跟随主题"), this))
    , m_preview(new QLabel(this))
    , m_contrast(new QLabel(this))
    , m_ok(new QPushButton(QStringLiteral("确定"), this))
{
    buildUi();
    const Settings &settings = Settings::instance();
    m_background->setColor(area == ReceiveArea ? settings.recvBackground : settings.sendBackground);
    m_text->setColor(area == ReceiveArea ? settings.recvTextColor : settings.sendTextColor);
    for (QtColorPanel *panel : {m_background, m_text}) {
        panel->setRecentColors(recentColors());
        connect(panel, &QtColorPanel::colorChanged, this, &QtStyleDialog::showPreview);
    }
    m_follow->setChecked(area == ReceiveArea ? settings.recvFollowsSkin : settings.sendFollowsSkin);
    showPreview();
}

QColor QtStyleDialog::background() const
{
    return m_background->color();
}

QColor QtStyleDialog::textColor() const
{
    return m_text->color();
}

void QtStyleDialog::accept()
{
    Settings &settings = Settings::instance();
    const bool receives = m_area == ReceiveArea;
    const bool follows = m_follow->isChecked();
    (receives ? settings.recvFollowsSkin : settings.sendFollowsSkin).set(follows);
    if (follows) { // the colors in the file are the user's own, for later
        QtFramelessDialog::accept();
        return;
    }
    (receives ? settings.recvBackground : settings.sendBackground).set(background());
    (receives ? settings.recvTextColor : settings.sendTextColor).set(textColor());
    remember(textColor());
    remember(background());
    QtFramelessDialog::accept();
}

void QtStyleDialog::buildUi()
{
    m_background->setObjectName(QStringLiteral("backgroundPanel"));
    m_text->setObjectName(QStringLiteral("textPanel"));
    m_tabs->addTab(m_background, QStringLiteral("背景颜色设置"));
    m_tabs->addTab(m_text, QStringLiteral("字体颜色设置"));
    body()->addWidget(m_tabs, 1);
    body()->addLayout(buildChoices());

    m_preview->setObjectName(QStringLiteral("colorPreview"));
    m_preview->setFont(Fonts::monospace());
    m_preview->setText(QStringLiteral("[12:30:45.678] ASCII >\n串口调试 AT+VERSION 0A 1B FF"));
    m_preview->setMargin(8);
    body()->addWidget(m_preview);
    m_contrast->setObjectName(QStringLiteral("contrastLabel"));

    auto *cancel = new QPushButton(QStringLiteral("取消"), this);
    m_ok->setObjectName(QStringLiteral("btnOk"));
    m_ok->setProperty("primary", true);
    m_ok->setDefault(true);
    cancel->setObjectName(QStringLiteral("btnCancel"));
    cancel->setAutoDefault(false);
    for (QPushButton *button : {m_ok, cancel})
        button->setMinimumWidth(80);
    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addWidget(m_contrast, 1);
    buttons->addWidget(m_ok);
    buttons->addWidget(cancel);
    body()->addLayout(buttons);
    connect(m_ok, &QPushButton::clicked, this, &QtStyleDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QtStyleDialog::reject);
}

QLayout *QtStyleDialog::buildChoices()
{
    auto *defaults = new QPushButton(QStringLiteral("恢复默认"), this);
    defaults->setObjectName(QStringLiteral("btnDefaultColors"));
    defaults->setAutoDefault(false);
    connect(defaults, &QPushButton::clicked, this, [this] {
        m_follow->setChecked(false);
        m_background->setColor(Settings::defaultBackground());
        m_text->setColor(Settings::defaultTextColor());
        showPreview();
    });
    m_follow->setObjectName(QStringLiteral("checkFollowSkin"));
    connect(m_follow, &QCheckBox::toggled, this, &QtStyleDialog::followSkin);
    auto *row = new QHBoxLayout;
    row->addWidget(m_follow);
    row->addStretch();
    row->addWidget(defaults);
    return row;
}

void QtStyleDialog::followSkin(bool follows)
{
    m_tabs->setEnabled(!follows);
    if (follows) {
        m_background->setColor(QColor(Skin::palette().panel));
        m_text->setColor(QColor(Skin::palette().text));
    }
    showPreview();
}

void QtStyleDialog::showPreview()
{
    m_preview->setStyleSheet(QStringLiteral("background-color: %1; color: %2; border: 1px solid #808080;")
                                 .arg(background().name(), textColor().name()));
    const double ratio = Contrast::ratio(background(), textColor());
    const bool poor = ratio < Contrast::readable;
    m_contrast->setText(QStringLiteral("对比度 %1 : 1%2")
                            .arg(ratio, 0, 'f', 1)
                            .arg(poor ? QStringLiteral("，不易辨认") : QString()));
    m_contrast->setProperty("kind", poor ? QStringLiteral("error") : QStringLiteral("hint"));
    m_contrast->style()->unpolish(m_contrast);
    m_contrast->style()->polish(m_contrast);
}
