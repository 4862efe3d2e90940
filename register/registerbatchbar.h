#pragma once

// A bar of fields for how a register table is worked through. They show and change the
// settings, where the starter of a table reads them.

#include <QWidget>

class QCheckBox;
class QSpinBox;

class RegisterBatchBar : public QWidget
{
    Q_OBJECT

public:
    explicit RegisterBatchBar(QWidget *parent = nullptr);

protected:
    void showEvent(QShowEvent *event) override; // the bar of another table may have changed them

private:
    QSpinBox *m_retries;
    QSpinBox *m_delay;
    QCheckBox *m_stops;
};
