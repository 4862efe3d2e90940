#include "codecbar.h"

#include "settings.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

CodecBar::CodecBar(QWidget *parent)
    : QWidget(parent)
    , m_text(new QLabel(this))
{
    setObjectName(QStringLiteral("codecBar"));
    m_text->setObjectName(QStringLiteral("labelCodec"));
    auto *change = new QPushButton(QStringLiteral("切换"), this);
    change->setObjectName(QStringLiteral("btnCodecSwitch"));
    auto *ignore = new QPushButton(QStringLiteral("忽略"), this);
    ignore->setObjectName(QStringLiteral("btnCodecIgnore"));
    ignore->setToolTip(QStringLiteral("再次打开之前不再提示"));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    row->addWidget(m_text, 1);
    row->addWidget(change);
    row->addWidget(ignore);
    connect(change, &QPushButton::clicked, this, [this] {
        hide();
        emit codecWanted(m_shown);
    });
    connect(ignore, &QPushButton::clicked, this, &QWidget::hide);
    hide();
}

void CodecBar::begin()
{
    m_told.clear();
    m_guess.clear();
    hide();
}

void CodecBar::watch(const QByteArray &bytes, const QString &stream)
{
    if (stream.isEmpty() || stream != m_stream)
        m_guess.cut();
    m_stream = stream;
    m_guess.add(bytes);
    const std::optional<TextCodec::Index> codec = m_guess.verdict();
    if (!codec || *codec == Settings::instance().textCodec || m_told.contains(*codec))
        return;
    m_told.insert(*codec);
    m_shown = *codec;
    m_text->setText(
        QStringLiteral("接收的数据看起来是%1编码").arg(QString::fromLatin1(TextCodec::name(m_shown))));
    show();
}

void CodecBar::reload()
{
    if (m_shown == Settings::instance().textCodec)
        hide();
}
