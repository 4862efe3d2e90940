#include "userhand.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QTest>
#include <QTextEdit>
#include <QTimer>
#include <QWindow>

namespace {

constexpr int kWaitMs = 30000;
constexpr int kPollMs = 20;

bool fail(const QString &why, const QWidget *widget = nullptr)
{
    qWarning().noquote() << "the user cannot go on:" << why
                         << (widget ? QLatin1String(widget->metaObject()->className()) + QLatin1Char(' ') +
                                          widget->objectName()
                                    : QString());
    return false;
}

bool isUp(const QWidget *window)
{
    return window && window->isVisible() && window->windowHandle() && window->windowHandle()->isExposed();
}

QPoint inWindow(const QWidget *widget, const QPoint &place)
{
    return widget->mapTo(widget->window(), place);
}

QAction *actionNamed(const QMenu *menu, const QString &text)
{
    const QList<QAction *> actions = menu->actions();
    for (QAction *action : actions) {
        if (action->text() == text)
            return action;
    }
    return nullptr;
}

// The window that gets the keys; null when none has them within the time.
QWindow *keyWindow()
{
    const auto isReady = [] {
        return QGuiApplication::focusWindow() && QGuiApplication::focusWindow()->isExposed();
    };
    return QTest::qWaitFor(isReady, kWaitMs) ? QGuiApplication::focusWindow() : nullptr;
}

// No list and no menu is open, and the window below has the keys again, which
// comes a little later: keys typed in between are lost.
bool waitForPopupsToClose()
{
    return QTest::qWaitFor(
        [] {
            const QWindow *window = QGuiApplication::focusWindow();
            return !QApplication::activePopupWidget() && window && window->isExposed() &&
                   window->type() != Qt::Popup;
        },
        kWaitMs);
}

// The widget or the field inside of it has the focus.
bool hasFocus(const QWidget *widget)
{
    return widget->hasFocus() || widget->isAncestorOf(QApplication::focusWidget());
}

// What a field for text shows; nothing where the widget is none.
QString textIn(const QWidget *field)
{
    if (const auto *line = qobject_cast<const QLineEdit *>(field))
        return line->text();
    if (const auto *plain = qobject_cast<const QPlainTextEdit *>(field))
        return plain->toPlainText();
    const auto *rich = qobject_cast<const QTextEdit *>(field);
    return rich ? rich->toPlainText() : QString();
}

void closePopups()
{
    while (QWidget *popup = QApplication::activePopupWidget())
        popup->close();
}

// Follows the path through the menu that the click on the button opens; the
// click returns when the menus have closed.
bool walkMenu(QPushButton *button, const QStringList &path,
              const std::function<void(QMenu *menu, QAction *action)> &atEnd)
{
    bool arrived = false;
    int step = 0;
    QElapsedTimer clock;
    clock.start();
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
        if (clock.hasExpired(kWaitMs)) {
            look.stop();
            closePopups();
            return;
        }
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QAction *action = isUp(menu) ? actionNamed(menu, path.at(step)) : nullptr;
        if (!action)
            return;
        const QPoint place = menu->actionGeometry(action).center();
        QTest::mouseMove(menu->windowHandle(), place);
        if (++step < path.size()) {
            QTest::mouseClick(menu->windowHandle(), Qt::LeftButton, {}, place);
            return;
        }
        look.stop();
        arrived = true;
        atEnd(menu, action);
    });
    look.start(kPollMs);
    if (!UserHand::click(button))
        return false;
    return (arrived && waitForPopupsToClose()) ||
           fail(QStringLiteral("no menu ") + path.join(QStringLiteral(" > ")), button);
}

} // namespace

namespace UserHand {

bool click(QWidget *widget)
{
    return widget ? clickAt(widget, widget->rect().center())
                  : fail(QStringLiteral("there is no such widget"));
}

bool clickAt(QWidget *widget, const QPoint &place)
{
    if (!widget->isVisible() || !widget->isEnabled())
        return fail(QStringLiteral("hidden or disabled"), widget);
    for (QWidget *parent = widget->parentWidget(); parent; parent = parent->parentWidget()) {
        if (auto *area = qobject_cast<QScrollArea *>(parent))
            area->ensureWidgetVisible(widget);
    }
    QWidget *window = widget->window();
    const QPoint position = inWindow(widget, place);
    QWidget *hit = window->childAt(position);
    if (hit != widget && !widget->isAncestorOf(hit) && window != widget)
        return fail(QStringLiteral("covered or out of sight"), widget);
    if (QWidget *modal = QApplication::activeModalWidget(); modal && modal != window)
        return fail(QStringLiteral("behind a modal dialog"), widget);
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, position);
    return true;
}

bool press(int key, Qt::KeyboardModifiers modifiers)
{
    QWindow *window = keyWindow();
    if (!window)
        return fail(QStringLiteral("no window has the focus"));
    QTest::keyClick(window, static_cast<Qt::Key>(key), modifiers);
    return true;
}

bool type(const QString &text)
{
    for (const QChar character : text) {
        QWindow *window = keyWindow();
        if (!window || !QApplication::focusWidget())
            return fail(QStringLiteral("nothing has the focus"));
        if (character == QLatin1Char('\n')) {
            QTest::keyClick(window, Qt::Key_Return);
        } else if (character.unicode() < 0x7F) {
            QTest::keyClick(window, character.toLatin1());
        } else {
            QInputMethodEvent event;
            event.setCommitString(character);
            QCoreApplication::sendEvent(QApplication::focusWidget(), &event);
        }
    }
    return true;
}

bool typeInto(QWidget *field, const QString &text)
{
    if (!click(field))
        return false;
    if (!QTest::qWaitFor([field] { return hasFocus(field); }, kWaitMs))
        return fail(QStringLiteral("the field did not get the focus"), field);
    if (!press(Qt::Key_A, Qt::ControlModifier) || !press(Qt::Key_Backspace))
        return false;
    if (!QTest::qWaitFor([field] { return textIn(field).isEmpty(); }, kWaitMs))
        return fail(QStringLiteral("the field was not emptied"), field);
    if (!type(text))
        return false;
    if (!QTest::qWaitFor([field, &text] { return textIn(field) == text; }, kWaitMs))
        return fail(QStringLiteral("the field shows ") + textIn(field) + QStringLiteral(" instead of ") +
                        text,
                    field);
    return true;
}

bool choose(QComboBox *box, const QString &entry)
{
    const int row = box->findText(entry);
    if (row < 0)
        return fail(QStringLiteral("the list has no ") + entry, box);
    if (!clickAt(box, {box->width() - 8, box->height() / 2}))
        return false;
    QAbstractItemView *view = box->view();
    if (!QTest::qWaitFor([view] { return isUp(view->window()); }, kWaitMs))
        return fail(QStringLiteral("the list did not open"), box);
    const QModelIndex index = box->model()->index(row, box->modelColumn());
    view->scrollTo(index);
    const QPoint place = inWindow(view->viewport(), {20, view->visualRect(index).center().y()});
    QWindow *list = view->window()->windowHandle();
    // A list ignores the click that opened it until the pointer has moved on.
    QTest::mouseMove(list, place + QPoint(12, 0));
    QTest::mouseMove(list, place);
    if (!QTest::qWaitFor([&] { return view->currentIndex() == index; }, kWaitMs))
        return fail(QStringLiteral("the entry could not be pointed at"), box);
    QTest::mouseClick(list, Qt::LeftButton, {}, place);
    if (!waitForPopupsToClose() || view->isVisible() || box->currentIndex() != row)
        return fail(QStringLiteral("the entry was not chosen"), box);
    return true;
}

bool chooseFromMenu(QPushButton *button, const QStringList &path)
{
    return walkMenu(button, path, [](QMenu *menu, QAction *action) {
        QTest::mouseClick(menu->windowHandle(), Qt::LeftButton, {}, menu->actionGeometry(action).center());
    });
}

bool visitMenu(QPushButton *button, const QStringList &path, const std::function<void()> &visit)
{
    return walkMenu(button, path, [&visit](QMenu *, QAction *) {
        visit();
        closePopups();
    });
}

bool inDialog(const std::function<bool()> &opens, const std::function<bool(QWidget *dialog)> &answer)
{
    bool answered = false;
    QElapsedTimer clock;
    clock.start();
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
        QWidget *dialog = QApplication::activeModalWidget();
        if (clock.hasExpired(kWaitMs)) {
            look.stop();
            if (dialog)
                dialog->close();
        } else if (isUp(dialog) && dialog->isActiveWindow()) {
            look.stop();
            answered = answer(dialog);
            if (!answered)
                dialog->close();
        }
    });
    look.start(kPollMs);
    if (!opens())
        return false;
    // The dialog may open later than what asked for it returns.
    const bool over = QTest::qWaitFor([&] { return !look.isActive(); }, kWaitMs + 1000);
    return (over && answered) || fail(QStringLiteral("no dialog was answered"));
}

} // namespace UserHand
