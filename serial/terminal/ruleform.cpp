#include "ruleform.h"

#include "colorswatches.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>

namespace {

enum Range { Line, Match };

const QVector<QColor> kColors{0xFF4D4D, 0xFF8A3D, 0xFFB000, 0xD6C928, 0x8BC34A, 0x35C778, 0x20C5B5,
                              0x2FB4F0, 0x4D8DFF, 0x9B7BFF, 0xFF4DD8, 0xFF7FA5, 0xB98A5E, 0x8C9BA8};

} // namespace

RuleForm::RuleForm(QWidget *parent)
    : QWidget(parent)
    , m_pattern(new QLineEdit(this))
    , m_case(check("checkRuleCase", QStringLiteral("大小写"), QStringLiteral("区分大小写")))
    , m_word(check("checkRuleWord", QStringLiteral("全字"), QStringLiteral("只匹配完整的单词")))
    , m_expression(check("checkRuleExpression", QStringLiteral("正则"), QStringLiteral("内容是正则表达式")))
    , m_range(new QComboBox(this))
    , m_colors(new ColorSwatches(kColors.size(), 1, this))
    , m_color(new QLineEdit(this))
{
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(8);
    rows->addLayout(buildPattern());
    rows->addLayout(buildColor());
}

QHBoxLayout *RuleForm::buildPattern()
{
    m_pattern->setObjectName(QStringLiteral("editRulePattern"));
    m_pattern->setMaxLength(ColorRuleFile::maxPattern);
    m_pattern->setAccessibleName(QStringLiteral("内容"));
    connect(m_pattern, &QLineEdit::textEdited, this, &RuleForm::readFields);
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(new QLabel(QStringLiteral("内容"), this));
    row->addWidget(m_pattern, 1);
    for (QCheckBox *option : {m_case, m_word, m_expression})
        row->addWidget(option);
    return row;
}

QHBoxLayout *RuleForm::buildColor()
{
    m_colors->setObjectName(QStringLiteral("ruleColors"));
    m_colors->setColors(kColors);
    connect(m_colors, &ColorSwatches::picked, this, &RuleForm::setColor);
    m_color->setObjectName(QStringLiteral("editRuleColor"));
    m_color->setAccessibleName(QStringLiteral("颜色"));
    m_color->setToolTip(QStringLiteral("十六进制颜色，显示时按背景调整明暗"));
    m_color->setFixedWidth(84);
    m_color->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("#[0-9A-Fa-f]{6}")), m_color));
    connect(m_color, &QLineEdit::textEdited, this, [this](const QString &text) {
        if (m_color->hasAcceptableInput())
            setColor(QColor(text));
    });
    m_range->setObjectName(QStringLiteral("comboRuleRange"));
    m_range->setAccessibleName(QStringLiteral("范围"));
    m_range->addItems({QStringLiteral("整行"), QStringLiteral("匹配的文字")});
    connect(m_range, QOverload<int>::of(&QComboBox::activated), this, &RuleForm::readFields);
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(new QLabel(QStringLiteral("颜色"), this));
    row->addWidget(m_colors);
    row->addWidget(m_color);
    row->addStretch();
    row->addWidget(new QLabel(QStringLiteral("范围"), this));
    row->addWidget(m_range);
    return row;
}

QCheckBox *RuleForm::check(const char *name, const QString &text, const QString &tip)
{
    auto *made = new QCheckBox(text, this);
    made->setObjectName(QLatin1String(name));
    made->setToolTip(tip);
    connect(made, &QCheckBox::clicked, this, &RuleForm::readFields);
    return made;
}

void RuleForm::setRule(const ColorRule &rule)
{
    m_rule = rule;
    if (m_pattern->text() != rule.pattern.text) // keeps the cursor
        m_pattern->setText(rule.pattern.text);
    m_case->setChecked(rule.pattern.caseSensitive);
    m_word->setChecked(rule.pattern.wholeWord);
    m_expression->setChecked(rule.pattern.isExpression);
    m_range->setCurrentIndex(rule.isForLine ? Line : Match);
    const QColor color = QColor(QRgb(rule.color));
    m_colors->setCurrentColor(color);
    if (QColor(m_color->text()) != color)
        m_color->setText(color.name());
}

void RuleForm::focusPattern()
{
    m_pattern->setFocus(Qt::OtherFocusReason);
    m_pattern->selectAll();
}

// A line break that was pasted would match nothing.
void RuleForm::readFields()
{
    QString text = m_pattern->text();
    text.replace(QRegularExpression(QStringLiteral("[\\r\\n]+")), QStringLiteral(" "));
    m_rule.pattern = {text, m_case->isChecked(), m_word->isChecked(), m_expression->isChecked()};
    m_rule.isForLine = m_range->currentIndex() == Line;
    emit changed();
}

void RuleForm::setColor(const QColor &color)
{
    m_rule.color = color.rgb() & 0xFFFFFF;
    setRule(m_rule);
    emit changed();
}
