#pragma once

// The styles and messages by which Windows still snaps and animates a window
// without a frame, shows it in the task bar, maximises it to the work area, and gives it a
// shadow, a menu at its title and, from Windows 11 on, the choice of places at
// its maximise button. Compiled on Windows only; elsewhere it is not made.

#include <QAbstractNativeEventFilter>
#include <QByteArray>

class QAbstractButton;
class QPoint;
class QWidget;

class WindowsFrame : public QAbstractNativeEventFilter
{
public:
    explicit WindowsFrame(QWidget *window);
    ~WindowsFrame() override;

    void setResizable(bool resizable) { m_resizable = resizable; }

    bool nativeEventFilter(const QByteArray &eventType, void *message, long *result) override;

private:
    bool hitTest(const void *message, long *result) const;
    bool workMaximizeButton(const void *message, long *result);
    void keepInWorkArea(void *handle, void *position) const;
    void limitSize(void *handle, void *limits) const;
    QWidget *childAt(const QPoint &point) const;
    bool isTitle(const QPoint &point) const;
    QAbstractButton *maximizeButton() const;

    QWidget *m_window;
    bool m_resizable = true;
    bool m_styled = false;
    bool m_changingDpi = false; // the window gets the size for another scale
};
