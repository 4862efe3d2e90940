#pragma once

// A small dot that shows whether a device is open, by color and by shape: a
// filled green disc when it is, a grey ring when it isn't, an orange ring while
// it is being opened and a red cross when that failed.

#include <QWidget>

class StateIndicator : public QWidget
{
    Q_OBJECT

public:
    explicit StateIndicator(QWidget *parent = nullptr);

    enum State { Off, On, Busy, Failed };

    State state() const { return m_state; }
    // The tool tip says more.
    void setState(State state, const QString &toolTip);

    bool isOn() const { return m_state == On; }
    void setOn(bool on);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    State m_state = Off;
};
