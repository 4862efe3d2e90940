#pragma once

// What a user does with mouse and keyboard. Events go in at the window system's
// side, so that focus, modal dialogs, popups and shortcuts have their say; a
// widget that a user could not reach is not reached here either. Every function
// returns false, and says why, when it could not be done.

#include <QPoint>
#include <QString>
#include <QStringList>
#include <functional>

class QAction;
class QComboBox;
class QMenu;
class QPushButton;
class QWidget;

namespace UserHand {

// Clicks on a widget's middle, or at a place inside it.
bool click(QWidget *widget);
bool clickAt(QWidget *widget, const QPoint &place);

// Types into what has the focus; text that has no key comes by input method.
bool type(const QString &text);
bool press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
// Clicks into a field, and types the text in place of what it holds.
bool typeInto(QWidget *field, const QString &text);

// Opens the list and clicks on the entry.
bool choose(QComboBox *box, const QString &entry);

// Opens the button's menu and clicks along the path of texts.
bool chooseFromMenu(QPushButton *button, const QStringList &path);
// Opens the menus along the path, calls the function and closes them again.
bool visitMenu(QPushButton *button, const QStringList &path, const std::function<void()> &visit);

// Does what opens a modal dialog; when it is up, the answer gets it and has to
// close it.
bool inDialog(const std::function<bool()> &opens, const std::function<bool(QWidget *dialog)> &answer);

} // namespace UserHand
