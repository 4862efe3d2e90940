#pragma once

// The current value of a curve. As wide as its cell, however long the number; the
// complete number is in the tool tip. A truncated one would be another number.

#include <QLabel>

class NumberLabel : public QLabel
{
public:
    explicit NumberLabel(QWidget *parent);

    void setNumber(const QString &number);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QString m_number;
};
