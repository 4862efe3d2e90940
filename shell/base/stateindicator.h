#pragma once

// A small dot that tells whether a device is open, by colour and by shape: a
// filled green disc when it is, a grey ring when it isn't.

#include <QWidget>

class StateIndicator : public QWidget
{
    Q_OBJECT

public:
    explicit StateIndicator(QWidget *parent = nullptr);

    bool isOn() const { return m_on; }
    void setOn(bool on);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_on = false;
};
