#pragma once

// A value that is shown and that a double click, or Enter while it has the focus,
// asks to edit.

#include <QLabel>

class HexValueLabel : public QLabel
{
    Q_OBJECT

public:
    explicit HexValueLabel(QWidget *parent);

signals:
    void editWanted();

protected:
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
};
