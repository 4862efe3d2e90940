#include "answerform.h"

#include "framechecksum.h"
#include "placeholdertext.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSpinBox>

namespace {

// A line break that was pasted would be no part of a rule.
QString oneLine(QString text)
{
    return text.replace(QRegularExpression(QStringLiteral("[\\r\\n]+")), QStringLiteral(" "));
}

} // namespace

AnswerForm::AnswerForm(QWidget *parent)
    : QWidget(parent)
    , m_kind(combo("comboAnswerKind", QStringLiteral("匹配方式"),
                   {QStringLiteral("文本"), QStringLiteral("十六进制"), QStringLiteral("正则")}))
    , m_pattern(edit("editAnswerPattern", QStringLiteral("匹配"), AnswerRuleFile::maxPattern))
    , m_answerKind(combo("comboAnswerForm", QStringLiteral("应答方式"),
                         {QStringLiteral("文本"), QStringLiteral("十六进制")}))
    , m_answer(edit("editAnswer", QStringLiteral("应答"), AnswerRuleFile::maxAnswer))
    , m_name(edit("editAnswerName", QStringLiteral("名称"), AnswerRuleFile::maxName))
    , m_lineEnd(
          combo("comboAnswerLineEnd", QStringLiteral("行尾"),
                {QStringLiteral("无"), QStringLiteral("CR"), QStringLiteral("LF"), QStringLiteral("CR LF")}))
    , m_checksum(combo("comboAnswerChecksum", QStringLiteral("校验"),
                       QStringList(QStringLiteral("无")) + FrameChecksum::names()))
    , m_delay(new QSpinBox(this))
{
    m_delay->setObjectName(QStringLiteral("spinAnswerDelay"));
    m_delay->setAccessibleName(QStringLiteral("延时"));
    m_delay->setRange(0, AnswerRuleFile::maxDelayMs);
    m_delay->setSuffix(QStringLiteral(" ms"));
    connect(m_delay, QOverload<int>::of(&QSpinBox::valueChanged), this, &AnswerForm::readFields);
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    grid->addWidget(new QLabel(QStringLiteral("匹配"), this), 0, 0);
    grid->addWidget(m_kind, 0, 1);
    grid->addWidget(m_pattern, 0, 2);
    grid->addWidget(new QLabel(QStringLiteral("应答"), this), 1, 0);
    grid->addWidget(m_answerKind, 1, 1);
    grid->addWidget(m_answer, 1, 2);
    grid->addWidget(new QLabel(QStringLiteral("名称"), this), 2, 0);
    grid->addLayout(buildEnd(), 2, 1, 1, 2);
    grid->setColumnStretch(2, 1);
    showHints();
}

QLayout *AnswerForm::buildEnd()
{
    m_checksum->setToolTip(QStringLiteral("附在应答后面、行尾前面"));
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_name, 1);
    const std::pair<const char *, QWidget *> fields[] = {
        {"行尾", m_lineEnd}, {"校验", m_checksum}, {"延时", m_delay}};
    for (const auto &[label, field] : fields) {
        row->addWidget(new QLabel(QString::fromUtf8(label), this));
        row->addWidget(field);
    }
    return row;
}

QLineEdit *AnswerForm::edit(const char *name, const QString &label, int maxLength)
{
    auto *made = new QLineEdit(this);
    made->setObjectName(QLatin1String(name));
    made->setAccessibleName(label);
    made->setMaxLength(maxLength);
    PlaceholderText::keepFaint(made);
    connect(made, &QLineEdit::textEdited, this, &AnswerForm::readFields);
    return made;
}

QComboBox *AnswerForm::combo(const char *name, const QString &label, const QStringList &entries)
{
    auto *made = new QComboBox(this);
    made->setObjectName(QLatin1String(name));
    made->setAccessibleName(label);
    made->addItems(entries);
    connect(made, QOverload<int>::of(&QComboBox::activated), this, &AnswerForm::readFields);
    return made;
}

void AnswerForm::setRule(const AnswerRule &rule)
{
    m_rule = rule;
    const std::pair<QLineEdit *, const QString &> texts[] = {
        {m_name, rule.name}, {m_pattern, rule.pattern}, {m_answer, rule.answer}};
    for (const auto &[field, text] : texts)
        if (field->text() != text) // keeps the cursor
            field->setText(text);
    m_kind->setCurrentIndex(rule.kind);
    m_answerKind->setCurrentIndex(rule.isHexAnswer ? 1 : 0);
    m_lineEnd->setCurrentIndex(rule.lineEnd);
    m_checksum->setCurrentIndex(FrameChecksum::names().indexOf(rule.checksum.toLower()) + 1);
    const QSignalBlocker blocker(m_delay);
    m_delay->setValue(rule.delayMs);
    showHints();
}

void AnswerForm::focusPattern()
{
    m_pattern->setFocus(Qt::OtherFocusReason);
}

void AnswerForm::readFields()
{
    m_rule.name = oneLine(m_name->text());
    m_rule.kind = static_cast<AnswerRule::Kind>(m_kind->currentIndex());
    m_rule.pattern = oneLine(m_pattern->text());
    m_rule.isHexAnswer = m_answerKind->currentIndex() == 1;
    m_rule.answer = oneLine(m_answer->text());
    m_rule.lineEnd = static_cast<AnswerRule::LineEnd>(m_lineEnd->currentIndex());
    m_rule.checksum = m_checksum->currentIndex() > 0 ? m_checksum->currentText() : QString();
    m_rule.delayMs = m_delay->value();
    showHints();
    emit changed();
}

void AnswerForm::showHints()
{
    static const QStringList patterns{QStringLiteral("例如 AT+GMR\\r\\n，可用 \\r \\n \\t \\0 \\xHH \\\\"),
                                      QStringLiteral("例如 AA 55 (\?\? \?\?) 0?，“?”为任意，括号为一组"),
                                      QStringLiteral("例如 temp=(\\d+)，括号为一组")};
    static const QStringList answers{
        QStringLiteral("$0 为匹配到的全部，$1 至 $9 为各组，$$ 为“$”；留空时只计数"),
        QStringLiteral("例如 01 03 $1，$0 为匹配到的全部，$1 至 $9 为各组；留空时只计数")};
    m_pattern->setPlaceholderText(patterns.at(m_rule.kind));
    m_pattern->setToolTip(patterns.at(m_rule.kind));
    m_answer->setPlaceholderText(answers.at(m_rule.isHexAnswer ? 1 : 0));
    m_answer->setToolTip(m_answer->placeholderText());
}
