#pragma once

// What all combo boxes, spin boxes, sliders and scroll bars of the program do
// differently from Qt's default:
// - The wheel passes through to what scrolls behind them. It changes a spin box
//   or a slider that has the focus; a combo box changes only through its list.
// - The list of a combo box is a list with rows of the style sheet's height,
//   whether the box can be edited or not.
// - A scroll bar that is always shown has a handle only where there is something
//   to scroll: otherwise it is disabled.

#include <QObject>

class FieldBehavior : public QObject
{
    Q_OBJECT

public:
    // Once for the application; does nothing when called again.
    static void install();

    // Gives each button without a text its tool tip as its name for screen
    // readers. Call it when the children of the widget exist.
    static void nameIconButtons(QWidget *parent);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    explicit FieldBehavior(QObject *parent);
};
