#include "qtcolorpanel.h"

#include "colorswatches.h"
#include "huesaturationfield.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QSlider>
#include <QStyle>
#include <QVariant>

namespace {

constexpr int columns = 12;

// Greys, dark and soft backgrounds, and clear text colors.
QVector<QColor> standardColors()
{
    static const char *const names[] = {
        "#000000", "#1e1e1e", "#302f2f", "#4b4b4b", "#666666", "#808080", "#a6a6a6", "#c0c0c0", "#d9d9d9",
        "#f2f2f2", "#faf7ee", "#ffffff", "#0c2233", "#263240", "#12312b", "#1f3a1f", "#3a2f12", "#3b1d1d",
        "#2d1f3d", "#e8f4fb", "#e9f7ef", "#fff8e1", "#fdecea", "#f3e8fd", "#02a1dd", "#5ec8f2", "#2ecc9a",
        "#7ddb6f", "#c3e64c", "#ffe066", "#feba3b", "#ff8c42", "#ff6b5e", "#f06fb0", "#b48cf2", "#aebfc5",
    };
    QVector<QColor> colors;
    for (const char *name : names)
        colors.append(QColor(QLatin1String(name)));
    return colors;
}

const QRegularExpression &hexPattern()
{
    static const QRegularExpression pattern(QStringLiteral("#[0-9a-fA-F]{6}"));
    return pattern;
}

} // namespace

QtColorPanel::QtColorPanel(QWidget *parent)
    : QWidget(parent)
    , m_swatches(new ColorSwatches(columns, 3, this))
    , m_recent(new ColorSwatches(columns, 1, this))
    , m_field(new HueSaturationField(this))
    , m_value(new QSlider(Qt::Vertical, this))
    , m_hex(new QLineEdit(this))
    , m_sample(new QLabel(this))
{
    buildUi();
    connect(m_swatches, &ColorSwatches::picked, this,
            [this](const QColor &color) { take(color, Source::Other); });
    connect(m_recent, &ColorSwatches::picked, this,
            [this](const QColor &color) { take(color, Source::Other); });
    connect(m_field, &HueSaturationField::changed, this, &QtColorPanel::takeFromField);
    connect(m_value, &QSlider::valueChanged, this, &QtColorPanel::takeFromSlider);
    connect(m_hex, &QLineEdit::textEdited, this, &QtColorPanel::takeFromHex);
    setColor(m_color);
}

void QtColorPanel::setColor(const QColor &color)
{
    take(color, Source::Program);
}

void QtColorPanel::setRecentColors(const QVector<QColor> &colors)
{
    m_recent->setColors(colors);
    m_recent->setCurrentColor(m_color);
}

bool QtColorPanel::isHexValid() const
{
    return m_hex->hasAcceptableInput();
}

void QtColorPanel::buildUi()
{
    m_swatches->setColors(standardColors());
    m_swatches->setObjectName(QStringLiteral("standardColors"));
    m_recent->setObjectName(QStringLiteral("recentColors"));
    m_field->setObjectName(QStringLiteral("hueSaturation"));
    m_value->setObjectName(QStringLiteral("valueSlider"));
    m_value->setRange(0, 255);
    m_value->setPageStep(16);
    m_value->setToolTip(QStringLiteral("亮度"));
    m_hex->setObjectName(QStringLiteral("hexField"));
    m_hex->setValidator(new QRegularExpressionValidator(hexPattern(), m_hex));
    m_hex->setMaxLength(7);
    m_hex->setFixedWidth(96);
    m_hex->setToolTip(QStringLiteral("十六进制颜色值，例如 #02a1dd"));
    m_sample->setFixedSize(48, 26);

    auto *layout = new QGridLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->setHorizontalSpacing(8);
    layout->setVerticalSpacing(8);
    layout->addWidget(m_swatches, 0, 0, 1, 4);
    layout->addWidget(m_field, 1, 0, 1, 3);
    layout->addWidget(m_value, 1, 3, Qt::AlignHCenter);
    auto *caption = new QLabel(QStringLiteral("颜色值"), this);
    caption->setBuddy(m_hex);
    layout->addWidget(caption, 2, 0);
    layout->addWidget(m_hex, 2, 1);
    layout->addWidget(m_sample, 2, 2, Qt::AlignLeft);
    layout->addWidget(new QLabel(QStringLiteral("最近使用"), this), 3, 0, 1, 4);
    layout->addWidget(m_recent, 4, 0, 1, 4);
    layout->setColumnStretch(2, 1);
    layout->setRowStretch(1, 1);
}

// A half-typed text is not written over. The field and the slider give colors
// that know their hue even where they are black or grey; of others it is kept.
void QtColorPanel::take(const QColor &color, Source source)
{
    m_color = color.toRgb(); // one form, so that equal colors compare equal
    m_field->setColor(color.hue() < 0 ? m_field->hue() : color.hue(), color.saturation());
    const QSignalBlocker blocker(m_value);
    m_value->setValue(color.value());
    if (source != Source::Hex)
        m_hex->setText(color.name());
    markHex(true);
    m_swatches->setCurrentColor(color);
    m_recent->setCurrentColor(color);
    m_sample->setStyleSheet(
        QStringLiteral("background-color: %1; border: 1px solid #808080; border-radius: 3px;")
            .arg(color.name()));
    if (source != Source::Program)
        emit colorChanged(m_color);
}

void QtColorPanel::takeFromField(int hue, int saturation)
{
    take(QColor::fromHsv(hue, saturation, m_value->value()), Source::Other);
}

void QtColorPanel::takeFromSlider(int value)
{
    take(QColor::fromHsv(m_field->hue(), m_field->saturation(), value), Source::Other);
}

void QtColorPanel::takeFromHex(const QString &text)
{
    if (m_hex->hasAcceptableInput())
        take(QColor(text), Source::Hex);
    else
        markHex(false);
}

void QtColorPanel::markHex(bool valid)
{
    const QVariant kind = valid ? QVariant() : QVariant(QStringLiteral("error"));
    if (m_hex->property("kind") == kind)
        return;
    m_hex->setProperty("kind", kind);
    m_hex->style()->unpolish(m_hex);
    m_hex->style()->polish(m_hex);
}
