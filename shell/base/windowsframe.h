#pragma once

// What Windows must be told so that a window without a frame is still snapped,
// animated, shown in the task bar and maximised to the work area. Compiled on
// Windows only; elsewhere nobody makes one.

#include <QAbstractNativeEventFilter>
#include <QByteArray>

class QWidget;

class WindowsFrame : public QAbstractNativeEventFilter
{
public:
    explicit WindowsFrame(QWidget *window);
    ~WindowsFrame() override;

    void setResizable(bool resizable) { m_resizable = resizable; }

    bool nativeEventFilter(const QByteArray &eventType, void *message, long *result) override;

private:
    QWidget *m_window;
    bool m_resizable = true;
    bool m_styled = false;
};
