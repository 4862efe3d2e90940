#pragma once

// The frameless base of the main window: a widget with an outline of its own
// that is moved, resized, minimised and maximised by its FramelessHelper. The
// derived class lays out its children, inside a margin of one pixel.

#include <QWidget>

class FramelessHelper;
class QtTitleBar;

class QtMainWindow : public QWidget
{
    Q_OBJECT

public:
    explicit QtMainWindow(QWidget *parent = nullptr);

    FramelessHelper *frame() const { return m_frame; }

protected:
    // Lets the title bar move, minimise and maximise the window.
    void attachTitleBar(QtTitleBar *titleBar);
    void paintEvent(QPaintEvent *event) override;

private:
    FramelessHelper *m_frame;
};
