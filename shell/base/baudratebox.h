#pragma once

// An editable list of baud rates. Arrow keys and the wheel step from the rate
// shown to its neighbor in the list.

#include <QComboBox>

class BaudRateBox : public QComboBox
{
    Q_OBJECT

public:
    static constexpr int maxRate = 100 * 1000 * 1000;

    // Ascending, separated by spaces.
    BaudRateBox(const QString &rates, QWidget *parent);

    int baudRate() const; // 0 where the text is no rate
    void setBaudRate(int rate);

    void showPopup() override;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void step(int direction);
};
