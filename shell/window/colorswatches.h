#pragma once

// A grid of colours to pick from, by mouse or with the arrow keys and Space.

#include <QColor>
#include <QVector>
#include <QWidget>

class ColourSwatches : public QWidget
{
    Q_OBJECT

public:
    // Empty places are drawn for colours that are still to come.
    ColourSwatches(int columns, int rows, QWidget *parent = nullptr);

    void setColours(const QVector<QColor> &colours);
    const QVector<QColor> &colours() const { return m_colours; }
    // Marks the swatch of this colour, if there is one.
    void setCurrentColour(const QColor &colour);

    QRect cell(int index) const;
    QSize sizeHint() const override;

signals:
    void picked(const QColor &colour);

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
    QVector<QColor> m_colours;
};
