#pragma once

// Keeps the place of a window across starts: written a moment after the user has
// moved or resized it, shown again if it is still on a screen.

#include <QObject>
#include <QTimer>

class QWidget;

class WindowMemory : public QObject
{
    Q_OBJECT

public:
    explicit WindowMemory(QWidget *window);

    // Before the window is shown. A place that no screen has is not used.
    void restore();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void write();

    QWidget *m_window;
    QTimer m_timer;
};
