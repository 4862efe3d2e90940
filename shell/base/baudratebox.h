#pragma once

// A list of baud rates that any other rate can be typed into. Arrow keys and
// the wheel go from the rate that is shown to its neighbour in the list.

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
    bool step(int direction);
};
