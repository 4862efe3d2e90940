#pragma once

// Makes a top-level widget a window without the system's frame that still
// behaves like one with it: moved by its title bar, resized at edges and
// corners, maximised to the work area. The system moves and resizes where it
// can; otherwise this class does. Owned by its window, which draws itself
// (paintOutline draws the edge).

#include <QObject>
#include <QPointer>
#include <QRect>
#include <memory>

class QMouseEvent;
class QWidget;
class QWindow;
class WindowsFrame;

class FramelessHelper : public QObject
{
    Q_OBJECT

public:
    static constexpr int edgeWidth = 5;

    // Sets the window's flags, so it must come before the window is shown.
    explicit FramelessHelper(QWidget *window);
    ~FramelessHelper() override;

    // The widget that moves the window when dragged and maximises it when
    // double-clicked.
    void setMoveHandle(QWidget *handle);

    // Whether edges resize and the window can be maximised; it is at first.
    void setResizable(bool resizable);
    bool isResizable() const { return m_resizable; }

    bool isMaximized() const;

    // Background by style sheet and one pixel of the skin's outline color.
    // For the window's paintEvent().
    static void paintOutline(QWidget *window);

public slots:
    void minimize();
    void toggleMaximized();
    // Gives a maximised window the work area where no window manager did it.
    void sltFillWorkArea();

signals:
    void maximizedChanged(bool maximized);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum class Drag { None, Pressed, Move, Resize };

    void attachToHandle();
    bool handleWindowMouse(QMouseEvent *event);
    bool handleTitleMouse(QMouseEvent *event);
    void restore(QRect normal);
    void startMove(const QPoint &pointer);
    bool startResize(Qt::Edges edges, const QPoint &pointer);
    void continueDrag(const QPoint &pointer);
    void showCursor(Qt::Edges edges);

    QWidget *m_window;
    QPointer<QWindow> m_handle;
    QPointer<QWidget> m_moveHandle;
    bool m_resizable = true;
    bool m_cursorShown = false;
    Qt::Edges m_cursorEdges;
    Drag m_drag = Drag::None;
    Qt::Edges m_dragEdges;
    QPoint m_dragStart;
    QRect m_geometryAtStart;
    QRect m_normalGeometry;                       // before maximising
    bool m_fillsWorkArea = false;                 // maximised by us, not by a window manager
    std::unique_ptr<WindowsFrame> m_windowsFrame; // on Windows only
};
