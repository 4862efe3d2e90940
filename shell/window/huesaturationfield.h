#pragma once

// A field of all hues (left to right) and saturations (full at the top), painted
// at full value. Dragging or the arrow keys (with Shift ten steps) choose.

#include <QImage>
#include <QWidget>

class HueSaturationField : public QWidget
{
    Q_OBJECT

public:
    explicit HueSaturationField(QWidget *parent = nullptr);

    int hue() const { return m_hue; }               // 0 to 359
    int saturation() const { return m_saturation; } // 0 to 255
    // Emits nothing.
    void setColor(int hue, int saturation);

    QSize sizeHint() const override;

signals:
    void changed(int hue, int saturation);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void choose(int hue, int saturation);
    void chooseAt(const QPoint &point);

    int m_hue = 0;
    int m_saturation = 0;
    QImage m_field;
};
