#include "findbar.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QStyle>
#include <QVBoxLayout>

FindBar::FindBar(QWidget *parent)
    : QWidget(parent)
    , m_text(new QLineEdit(this))
    , m_state(new QLabel(this))
{
    setObjectName(QStringLiteral("findBar"));
    m_text->setObjectName(QStringLiteral("editLogFind"));
    m_text->setPlaceholderText(QStringLiteral("查找"));
    m_text->setAccessibleName(QStringLiteral("查找内容"));
    m_text->setClearButtonEnabled(true);
    m_state->setObjectName(QStringLiteral("labelLogFind"));
    auto *previous = button("btnLogFindPrevious", QStringLiteral("上一个"), QStringLiteral("Shift+F3"));
    auto *next = button("btnLogFindNext", QStringLiteral("下一个"), QStringLiteral("F3"));
    auto *close = button("btnLogFindClose", QStringLiteral("关闭"), QStringLiteral("Esc"));
    m_case = check("checkLogFindCase", QStringLiteral("大小写"), QStringLiteral("区分大小写"),
                   &FindBar::patternChanged);
    m_word = check("checkLogFindWord", QStringLiteral("全字"), QStringLiteral("只找完整的单词"),
                   &FindBar::patternChanged);
    m_expression = check("checkLogFindExpression", QStringLiteral("正则"), QStringLiteral("按正则表达式查找"),
                         &FindBar::patternChanged);
    m_filter = check("checkLogFilter", QStringLiteral("只看匹配行"),
                     QStringLiteral("只显示匹配的行，双击一行回到完整内容中的该行"), &FindBar::filterChanged);
    m_inverted = check("checkLogFilterInverted", QStringLiteral("反向"), QStringLiteral("只显示不匹配的行"),
                       &FindBar::filterChanged);
    m_context = buildContext();
    for (QWidget *option : std::initializer_list<QWidget *>{m_inverted, m_context}) {
        option->hide();
        connect(m_filter, &QCheckBox::toggled, option, &QWidget::setVisible);
    }

    auto *fields = new QHBoxLayout;
    auto *options = new QHBoxLayout;
    for (QWidget *part : std::initializer_list<QWidget *>{m_text, m_state, previous, next, close})
        fields->addWidget(part, part == m_text ? 1 : 0);
    for (QWidget *part :
         std::initializer_list<QWidget *>{m_case, m_word, m_expression, m_filter, m_inverted, m_context})
        options->addWidget(part);
    options->addStretch();
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(4);
    for (QHBoxLayout *row : {fields, options}) {
        row->setSpacing(6);
        rows->addLayout(row);
    }
    connect(m_text, &QLineEdit::textChanged, this, &FindBar::patternChanged);
    connect(previous, &QPushButton::clicked, this, &FindBar::previousWanted);
    connect(next, &QPushButton::clicked, this, &FindBar::nextWanted);
    connect(close, &QPushButton::clicked, this, &FindBar::closed);
    hide();
}

QPushButton *FindBar::button(const char *name, const QString &text, const QString &tip)
{
    auto *made = new QPushButton(text, this);
    made->setObjectName(QLatin1String(name));
    made->setToolTip(tip);
    return made;
}

QCheckBox *FindBar::check(const char *name, const QString &text, const QString &tip,
                          void (FindBar::*changed)())
{
    auto *made = new QCheckBox(text, this);
    made->setObjectName(QLatin1String(name));
    made->setToolTip(tip);
    connect(made, &QCheckBox::toggled, this, changed);
    return made;
}

QSpinBox *FindBar::buildContext()
{
    auto *lines = new QSpinBox(this);
    lines->setObjectName(QStringLiteral("spinLogFilterContext"));
    lines->setAccessibleName(QStringLiteral("上下文行数"));
    lines->setToolTip(QStringLiteral("同时显示匹配行前后的几行"));
    lines->setRange(0, 3);
    lines->setPrefix(QStringLiteral("前后 "));
    lines->setSuffix(QStringLiteral(" 行"));
    connect(lines, QOverload<int>::of(&QSpinBox::valueChanged), this, &FindBar::filterChanged);
    return lines;
}

LineMatcher::Pattern FindBar::pattern() const
{
    return {m_text->text(), m_case->isChecked(), m_word->isChecked(), m_expression->isChecked()};
}

bool FindBar::isFiltering() const
{
    return m_filter->isChecked();
}

void FindBar::endFiltering()
{
    m_filter->setChecked(false);
}

LineFilter::Options FindBar::filterOptions() const
{
    return {m_inverted->isChecked(), m_context->value()};
}

void FindBar::setText(const QString &text)
{
    m_text->setText(text);
}

void FindBar::open()
{
    show();
    m_text->setFocus(Qt::ShortcutFocusReason);
    m_text->selectAll();
}

void FindBar::showState(const QString &text)
{
    showResult(text, "");
}

void FindBar::showFault(const QString &text)
{
    showResult(text, "error");
}

void FindBar::showResult(const QString &text, const char *kind)
{
    m_state->setText(text);
    if (m_state->property("kind") == QLatin1String(kind))
        return;
    m_state->setProperty("kind", QLatin1String(kind));
    m_state->style()->unpolish(m_state);
    m_state->style()->polish(m_state);
}

void FindBar::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        emit closed();
    else if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter)
        QWidget::keyPressEvent(event);
    else if (event->modifiers() & Qt::ShiftModifier)
        emit previousWanted();
    else
        emit nextWanted();
}
