#pragma once

// A grid of colors to pick from, by mouse or with the arrow keys and Space.

#include <QColor>
#include <QVector>
#include <QWidget>

class ColorSwatches : public QWidget
{
    Q_OBJECT

public:
    // Places without a color are drawn empty.
    ColorSwatches(int columns, int rows, QWidget *parent = nullptr);

    void setColors(const QVector<QColor> &colors);
    const QVector<QColor> &colors() const { return m_colors; }
    // Marks the swatch of this color, if there is one.
    void setCurrentColor(const QColor &color);

    QRect cell(int index) const;
    QSize sizeHint() const override;

signals:
    void picked(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool event(QEvent *event) override;

private:
    int indexAt(const QPoint &point) const;
    void pick(int index);
    void moveCursor(int index);

    int m_columns;
    int m_rows;
    int m_cursor = 0;
    QColor m_current;
    QVector<QColor> m_colors;
};
