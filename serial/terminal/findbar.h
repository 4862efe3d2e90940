#pragma once

// The bar below a receive display in which the user says what to find, and sees
// how much was found. Searches nothing, see LogFind.

#include "linefilter.h"

#include <QWidget>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

class FindBar : public QWidget
{
    Q_OBJECT

public:
    explicit FindBar(QWidget *parent = nullptr);

    LineMatcher::Pattern pattern() const;
    // Only lines that match are wanted on display.
    bool isFiltering() const;
    void endFiltering();
    LineFilter::Options filterOptions() const;
    void setText(const QString &text);
    // Shows the bar, with the keyboard in its field.
    void open();

    // "3/128", or a text in place of it.
    void showState(const QString &text);
    void showFault(const QString &text);

signals:
    void patternChanged();
    void filterChanged(); // on, off, or its options
    void nextWanted();
    void previousWanted();
    void closed();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QPushButton *button(const char *name, const QString &text, const QString &tip);
    QCheckBox *check(const char *name, const QString &text, const QString &tip, void (FindBar::*changed)());
    QSpinBox *buildContext();
    void showResult(const QString &text, const char *kind);

    QLineEdit *m_text;
    QLabel *m_state;
    QCheckBox *m_case;
    QCheckBox *m_word;
    QCheckBox *m_expression;
    QCheckBox *m_filter;
    QCheckBox *m_inverted;
    QSpinBox *m_context;
};
