#pragma once

// The real window with a folder and virtual ports of its own, and short words
// for what a user looks at. Tours and the gallery play on it.

#include "boardprocess.h"
#include "mainwindow.h"
#include "noticelog.h"

#include <QPointer>
#include <QTemporaryDir>
#include <QTimer>

class QtTerminalWidget;

// The limit of a wait, on the slowest machine. Unlike QTRY_*, a wait in vain
// takes no longer than that.
constexpr int kWaitLimitMs = 30000;
#define WAIT_FOR(condition) QVERIFY(QTest::qWaitFor([&] { return bool(condition); }, kWaitLimitMs))
#define WAIT_EQUAL(actual, expected)                                                                         \
    do {                                                                                                     \
        (void)QTest::qWaitFor([&] { return (actual) == (expected); }, kWaitLimitMs);                         \
        QCOMPARE(actual, expected);                                                                          \
    } while (false)

class Stage
{
public:
    // Shows the window and waits until it is active.
    Stage();
    ~Stage();
    Q_DISABLE_COPY_MOVE(Stage)

    bool isReady() const { return m_ready; }
    // A dialog stood open for longer than a wait may last and was closed.
    bool hadForgottenDialog() const { return m_hadForgottenDialog; }
    MainWindow &window() { return m_window; }
    QString rootFolder() const { return m_surroundings.root.path(); }
    QString portsFolder() const { return m_surroundings.ports.path(); }
    QString file(const QString &name) const { return m_surroundings.root.filePath(name); }
    QByteArray content(const QString &name) const; // of a file in the root folder

    // On the page shown, or else anywhere in the window.
    template <class Widget> Widget *find(const char *objectName)
    {
        auto *onPage = shownPage()->findChild<Widget *>(QLatin1String(objectName));
        return onPage ? onPage : m_window.findChild<Widget *>(QLatin1String(objectName));
    }
    bool showTool(int index); // by its tab

    // Starts the board and waits until the program lists its port.
    bool plugIn(BoardProcess &board, const QStringList &options);
    // Chooses the board's port from the list and opens it.
    bool openPort(const BoardProcess &board);
    bool closePort();
    bool isOpenShown(); // by the open button

    QtTerminalWidget *terminal();
    QString shownText();

    // What the status bar says.
    qint64 sentShown();
    qint64 receivedShown();
    Notice lastNotice();
    bool waitForNotice(const QString &text, Notice::Kind kind);

    // A port that is free at present.
    static quint16 freePort();

    // Menus of the title bar.
    bool chooseSetting(const QStringList &path);

    // Enters the name in the place of the file dialog.
    static void answerFileDialogs(const QString &name);

private:
    // Folders, paths and settings are in place before the window is made.
    struct Surroundings
    {
        Surroundings();
        QTemporaryDir root;
        QTemporaryDir ports;
    };
    QWidget *shownPage();
    void closeForgottenDialog();

    Surroundings m_surroundings;
    MainWindow m_window;
    bool m_ready = false;
    bool m_hadForgottenDialog = false;
    QTimer m_watch;
    QPointer<QWidget> m_dialog; // that was open when it was last looked
};
