#pragma once

// The fields in which the user edits one color rule.

#include "colorrules.h"

#include <QWidget>

class ColorSwatches;
class QCheckBox;
class QComboBox;
class QHBoxLayout;
class QLineEdit;

class RuleForm : public QWidget
{
    Q_OBJECT

public:
    explicit RuleForm(QWidget *parent = nullptr);

    // Emits nothing.
    void setRule(const ColorRule &rule);
    const ColorRule &rule() const { return m_rule; }
    void focusPattern();

signals:
    void changed(); // by the user

private:
    QHBoxLayout *buildPattern();
    QHBoxLayout *buildColor();
    QCheckBox *check(const char *name, const QString &text, const QString &tip);
    void readFields();
    void setColor(const QColor &color);

    ColorRule m_rule;
    QLineEdit *m_pattern;
    QCheckBox *m_case;
    QCheckBox *m_word;
    QCheckBox *m_expression;
    QComboBox *m_range;
    ColorSwatches *m_colors;
    QLineEdit *m_color;
};
