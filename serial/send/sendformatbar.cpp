#include "sendformatbar.h"

#include "fonts.h"
#include "framechecksum.h"
#include "hextext.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

// Of a long text the beginning and the end, where the checksum is.
constexpr int kShownAtStart = 20; // bytes
constexpr int kShownAtEnd = 8;

QString shownBytes(const QByteArray &bytes)
{
    if (bytes.size() <= kShownAtStart + kShownAtEnd)
        return HexText::render(bytes).trimmed();
    return HexText::render(bytes.left(kShownAtStart)) + QStringLiteral("… ") +
           HexText::render(bytes.right(kShownAtEnd)).trimmed();
}

} // namespace

SendFormatBar::SendFormatBar(QWidget *parent)
    : QWidget(parent)
    , m_fields(new QWidget(this))
    , m_sumFields(new QWidget(this))
    , m_lineEnd(new QComboBox(m_fields))
    , m_escapes(new QCheckBox(QStringLiteral("转义"), m_fields))
    , m_enterSends(new QCheckBox(QStringLiteral("Enter发送"), m_fields))
    , m_checksum(new QComboBox(m_fields))
    , m_order(new QComboBox(m_sumFields))
    , m_from(new QSpinBox(m_sumFields))
    , m_place(new QComboBox(m_sumFields))
    , m_bytes(new QLabel(this))
{
    setObjectName(QStringLiteral("sendFormatBar"));
    setAttribute(Qt::WA_StyledBackground); // not that of the send area
    buildUi();
    setOpen(false);
    connect(m_lineEnd, QOverload<int>::of(&QComboBox::activated), this, &SendFormatBar::handleLineEnd);
    connect(m_enterSends, &QCheckBox::toggled, this, &SendFormatBar::enterSendsChanged);
    connect(m_escapes, &QCheckBox::toggled, this, &SendFormatBar::changed);
    connect(m_from, QOverload<int>::of(&QSpinBox::valueChanged), this, &SendFormatBar::changed);
    for (QComboBox *box : {m_checksum, m_order, m_place}) {
        connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] {
            showFields();
            emit changed();
        });
    }
}

void SendFormatBar::buildUi()
{
    m_lineEnd->setObjectName(QStringLiteral("comboSendLineEnd"));
    m_escapes->setObjectName(QStringLiteral("checkSendEscapes"));
    m_enterSends->setObjectName(QStringLiteral("checkEnterSends"));
    m_checksum->setObjectName(QStringLiteral("comboSendChecksum"));
    m_order->setObjectName(QStringLiteral("comboSendChecksumOrder"));
    m_from->setObjectName(QStringLiteral("spinSendChecksumFrom"));
    m_place->setObjectName(QStringLiteral("comboSendChecksumPlace"));
    m_bytes->setObjectName(QStringLiteral("labelSendBytes"));
    m_lineEnd->addItems(
        {QStringLiteral("无"), QStringLiteral("CR LF"), QStringLiteral("LF"), QStringLiteral("CR")});
    m_lineEnd->setToolTip(QStringLiteral("“发送新行”追加的字节"));
    m_escapes->setToolTip(QStringLiteral("\\r \\n \\t \\0 \\xHH \\\\ 在发送字符串时表示单个字节"));
    m_enterSends->setToolTip(QStringLiteral("按Enter发送，Shift+Enter换行"));
    m_checksum->addItem(QStringLiteral("无"));
    for (const QString &name : FrameChecksum::names())
        m_checksum->addItem(name.toUpper());
    m_checksum->setToolTip(QStringLiteral("在数据后追加的校验码，用于单项发送"));
    m_order->addItems({QStringLiteral("惯用字节序"), QStringLiteral("相反字节序")});
    m_order->setToolTip(QStringLiteral("惯用：CRC-16/MODBUS和CRC-32低字节在前，其余高字节在前"));
    m_from->setRange(0, 65535);
    m_from->setPrefix(QStringLiteral("从第 "));
    m_from->setSuffix(QStringLiteral(" 字节起"));
    m_from->setToolTip(QStringLiteral("从0数起；之前的字节不参与校验"));
    m_place->addItems({QStringLiteral("行尾之前，不含行尾"), QStringLiteral("行尾之后，包含行尾")});
    m_order->setAccessibleName(QStringLiteral("校验字节序"));
    m_from->setAccessibleName(QStringLiteral("校验起始字节"));
    m_place->setAccessibleName(QStringLiteral("校验位置"));
    m_bytes->hide();
    m_bytes->setFont(Fonts::monospace());
    m_bytes->setProperty("kind", QStringLiteral("hint"));
    m_bytes->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_bytes->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // a long one is cut

    const auto addLabel = [this](QHBoxLayout *row, const QString &text, QComboBox *box) {
        auto *label = new QLabel(text, m_fields);
        label->setBuddy(box);
        box->setAccessibleName(text);
        row->addWidget(label);
        row->addWidget(box);
    };
    const auto rowIn = [](QWidget *widget) {
        auto *row = new QHBoxLayout(widget);
        row->setContentsMargins(0, 0, 0, 0);
        row->setSpacing(8);
        return row;
    };
    QHBoxLayout *row = rowIn(m_fields);
    addLabel(row, QStringLiteral("行尾"), m_lineEnd);
    addLabel(row, QStringLiteral("校验"), m_checksum);
    row->addWidget(m_escapes);
    row->addWidget(m_enterSends);
    row->addStretch();
    QHBoxLayout *sums = rowIn(m_sumFields);
    for (QWidget *field :
         {static_cast<QWidget *>(m_order), static_cast<QWidget *>(m_from), static_cast<QWidget *>(m_place)})
        sums->addWidget(field);
    sums->addStretch();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(4, 0, 4, 0);
    column->setSpacing(4);
    column->addWidget(m_fields);
    column->addWidget(m_sumFields);
    column->addWidget(m_bytes);
}

void SendFormatBar::remember(Settings::SendChoices *choices)
{
    m_choices = choices;
    m_memory.add(m_escapes, &choices->hasEscapes);
    m_memory.add(m_enterSends, &choices->enterSends);
    m_memory.add(m_checksum, &choices->checksum);
    const auto addPair = [this](QComboBox *box, Setting<bool> *setting) {
        box->setCurrentIndex(*setting ? 1 : 0);
        connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                [setting](int index) { setting->change(index == 1); });
    };
    addPair(m_order, &choices->isReversed);
    addPair(m_place, &choices->isAfterLineEnd);
    m_memory.add(m_from, &choices->checksumFrom);
    showLineEnd();
    setOpen(choices->isShown);
}

void SendFormatBar::load()
{
    m_memory.load();
    if (!m_choices)
        return;
    m_order->setCurrentIndex(m_choices->isReversed ? 1 : 0);
    m_place->setCurrentIndex(m_choices->isAfterLineEnd ? 1 : 0);
    showLineEnd();
    setOpen(m_choices->isShown);
    emit changed();
}

void SendFormatBar::writeTo(SendText *format) const
{
    format->lineEnd = m_choices ? static_cast<SendText::LineEnd>(int(m_choices->lineEnd)) : SendText::CrLf;
    format->hasEscapes = m_escapes->isChecked();
    format->checksum.name = m_checksum->currentIndex() > 0 ? m_checksum->currentText() : QString();
    format->checksum.isReversed = m_order->currentIndex() == 1;
    format->checksum.from = m_from->value();
    format->checksum.isAfterLineEnd = m_place->currentIndex() == 1;
}

void SendFormatBar::setNewline(bool isOn)
{
    m_addsNewline = isOn;
    showLineEnd();
}

void SendFormatBar::showLineEnd()
{
    m_lineEnd->setCurrentIndex(m_addsNewline ? (m_choices ? int(m_choices->lineEnd) : 0) + 1 : 0);
}

void SendFormatBar::handleLineEnd(int index)
{
    if (index > 0 && m_choices)
        m_choices->lineEnd.change(index - 1);
    emit newlineWanted(index > 0);
    emit changed();
}

void SendFormatBar::setOpen(bool isOpen)
{
    m_fields->setVisible(isOpen);
    showFields();
    if (m_choices)
        m_choices->isShown.change(isOpen);
    emit changed();
}

bool SendFormatBar::isOpen() const
{
    return !m_fields->isHidden();
}

void SendFormatBar::showFields()
{
    m_sumFields->setVisible(isOpen() && m_checksum->currentIndex() > 0);
}

void SendFormatBar::showBytes(const SendText::Encoded &encoded, bool isPlain)
{
    m_bytes->setVisible(isOpen() || !isPlain);
    if (!encoded.wrongEscape.isEmpty())
        m_bytes->setText(QStringLiteral("转义“%1”无效").arg(encoded.wrongEscape));
    else
        m_bytes->setText(
            QStringLiteral("发送%1字节 %2").arg(encoded.bytes.size()).arg(shownBytes(encoded.bytes)));
}
