// The main window with its real pages: routing of counts and notices, menus
// and settings, the ways out. The serial page is fed through a pseudo-terminal
// where the system has them.

#include "apppaths.h"
#include "cameradebugwidget.h"
#include "dialoganswers.h"
#include "fonts.h"
#include "formpanel.h"
#include "hexeditwidget.h"
#include "korvexresources.h"
#include "mainwindow.h"
#include "networktoolwidget.h"
#include "piddebugwidget.h"
#include "qtcountlabel.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "qtstatusbar.h"
#include "qttabbar.h"
#include "qttitlebar.h"
#include "serialportwidget.h"
#include "settings.h"
#include "skin.h"
#include "statuslabel.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTextEdit>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>
#include <QWheelEvent>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>
#endif

namespace {

QAction *actionOf(MainWindow &window, const QString &text)
{
    const auto menus = window.findChildren<QMenu *>();
    for (QMenu *menu : menus) {
        const auto actions = menu->actions();
        for (QAction *action : actions)
            if (action->text() == text)
                return action;
    }
    return nullptr;
}

QStringList textsOf(const QMenu *menu)
{
    QStringList texts;
    const auto actions = menu->actions();
    for (const QAction *action : actions) {
        texts += action->text();
        if (action->menu())
            texts += QLatin1Char('<') + textsOf(action->menu()).join(QLatin1Char(',')) + QLatin1Char('>');
    }
    return texts;
}

QByteArray configBytes()
{
    QFile file(AppPaths::configFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QVariant stored(const char *key)
{
    QSettings file(AppPaths::configFile(), QSettings::IniFormat);
    file.beginGroup("Common");
    return file.value(QLatin1String(key));
}

[[maybe_unused]] QString countText(MainWindow &window, const char *name) // with a port only
{
    return window.findChild<QtCountLabel *>(QLatin1String(name))->text();
}

// Writes down its steps and takes each as told.
class StepPage : public QtWidgetBase
{
public:
    StepPage(const QString &name, QStringList *steps)
        : m_name(name)
        , m_steps(steps)
    {
    }
    bool mayClose() override
    {
        m_steps->append(m_name + QStringLiteral("?"));
        if (whileAsked)
            whileAsked();
        return agrees;
    }
    void closeLinks() override
    {
        m_steps->append(m_name + QStringLiteral("x"));
        if (whileClosing)
            QTimer::singleShot(0, this, whileClosing);
    }
    bool isClosed() const override { return !whileClosing; }
    bool saveBeforeExit() override
    {
        m_steps->append(m_name + QStringLiteral("s"));
        return saves;
    }

    bool agrees = true;
    bool saves = true;
    std::function<void()> whileAsked;
    std::function<void()> whileClosing; // null: closed at once

private:
    QString m_name;
    QStringList *m_steps;
};

} // namespace

class MainWindowTest : public QObject
{
    Q_OBJECT

public slots:
    void openUrl(const QUrl &url) { m_opened += url.toString(); }

private slots:
    void initTestCase()
    {
        initKorvexResources();
        QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "openUrl");
    }
    void init()
    {
        m_root.reset(new QTemporaryDir);
        AppPaths::setRoot(m_root->path());
        AppPaths::makeFolders();
        Settings::writeDefaults();
        Settings::load();
        Skin::apply(Settings::instance().skin);
        m_opened.clear();
    }
    void cleanup()
    {
        DialogAnswers::instance() = {};
        if (QtMessageTip::current())
            QtMessageTip::current()->close();
    }

    void structure()
    {
        MainWindow window;
        QCOMPARE(window.objectName(), QStringLiteral("MainWindow"));
        QCOMPARE(window.minimumSize(), QSize(800, 500));
        QCOMPARE(window.layout()->contentsMargins(), QMargins(1, 1, 1, 1));
        QCOMPARE(window.layout()->spacing(), 0);
        QCOMPARE(window.layout()->count(), 4);
        QCOMPARE(window.findChild<QtTitleBar *>()->title(), QStringLiteral("Orvane多功能调试助手"));
        auto *tabs = window.findChild<QtTabBar *>();
        QStringList texts;
        for (int i = 0; i < tabs->count(); ++i)
            texts += tabs->tabText(i);
        QCOMPARE(texts.join(QLatin1Char('|')),
                 QStringLiteral("串口调试助手|摄像头调试助手|网络调试助手|PID调试助手|二进制文件编辑器"));
        auto *stack = window.findChild<QStackedWidget *>(QStringLiteral("pageStack"));
        QVERIFY(qobject_cast<SerialportWidget *>(stack->widget(0)));
        QVERIFY(qobject_cast<CameraDebugWidget *>(stack->widget(1)));
        QVERIFY(qobject_cast<NetworkToolWidget *>(stack->widget(2)));
        QVERIFY(qobject_cast<PidDebugWidget *>(stack->widget(3)));
        QVERIFY(qobject_cast<HexEditWidget *>(stack->widget(4)));
        window.show();
        window.resize(800, 500);
        QVERIFY(QTest::qWaitForWindowExposed(&window, 30000));
        QCOMPARE(window.size(), QSize(800, 500));
        QVERIFY(tabs->tabRect(4).right() < 800); // no tab out of reach
        QWheelEvent wheel(tabs->rect().center(), tabs->mapToGlobal(tabs->rect().center()), {}, {0, -120},
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(tabs, &wheel);
        QCOMPARE(tabs->currentIndex(), 0);
    }

    // What a screen reader calls a button that has no text.
    void iconsHaveNames()
    {
        MainWindow window;
        QStringList nameless;
        const auto buttons = window.findChildren<QAbstractButton *>();
        for (const QAbstractButton *button : buttons)
            if (button->text().isEmpty() && button->accessibleName().isEmpty() &&
                !button->objectName().startsWith(QStringLiteral("qt_")) &&
                !button->inherits("QTableCornerButton"))
                nameless += button->objectName();
        QCOMPARE(nameless.join(QLatin1Char(' ')), QString());
    }

    void tabsChangeTools()
    {
        MainWindow window;
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window, 30000));
        auto *tabs = window.findChild<QtTabBar *>();
        auto *stack = window.findChild<QStackedWidget *>(QStringLiteral("pageStack"));
        QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(2).center());
        QCOMPARE(stack->currentIndex(), 2);
        const auto shortcut = [&window](Qt::Key key, Qt::KeyboardModifiers modifiers) {
            QTest::keyClick(window.windowHandle(), key, modifiers);
        };
        shortcut(Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(stack->currentIndex(), 3);
        shortcut(Qt::Key_5, Qt::ControlModifier);
        QCOMPARE(stack->currentIndex(), 4);
        shortcut(Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(stack->currentIndex(), 0);
        shortcut(Qt::Key_Tab, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(stack->currentIndex(), 4);
        QCOMPARE(tabs->currentIndex(), 4);
    }

    void menusAsStated()
    {
        MainWindow window;
        QCOMPARE(textsOf(window.findChild<QMenu *>(QStringLiteral("settingsMenu"))).join(QLatin1Char(' ')),
                 QStringLiteral("接收区设置 发送区设置 编码设置 <UTF-8,GB18030> 主题 <深色,浅色,黄色> "
                                "数据缓存 <关闭时不提醒,关闭时提醒,自动保存> 恢复默认设置 退出"));
        QCOMPARE(textsOf(window.findChild<QMenu *>(QStringLiteral("helpMenu"))).join(QLatin1Char(' ')),
                 QStringLiteral("关于... 检查版本更新 关于Orvane科技"));
    }

    void checksFollowSettings()
    {
        Settings::instance().textCodec = 0;
        Settings::instance().skin = 2;
        Settings::instance().closeBehaviour = Settings::Ask;
        MainWindow window;
        const auto checked = [&window](const char *text) {
            return actionOf(window, QString::fromUtf8(text))->isChecked();
        };
        QVERIFY(checked("UTF-8") && !checked("GB18030"));
        QVERIFY(checked("黄色") && !checked("深色"));
        QVERIFY(checked("关闭时提醒") && !checked("自动保存"));

        actionOf(window, QStringLiteral("GB18030"))->trigger();
        QCOMPARE(Settings::instance().textCodec, 1);
        QCOMPARE(stored("TextCodec").toInt(), 1);
        QVERIFY(checked("GB18030") && !checked("UTF-8"));
        actionOf(window, QStringLiteral("浅色"))->trigger();
        QCOMPARE(Settings::instance().skin, 1);
        QCOMPARE(stored("Skin").toInt(), 1);
        QCOMPARE(Skin::palette().name, QStringLiteral("white"));
        actionOf(window, QStringLiteral("自动保存"))->trigger();
        QCOMPARE(Settings::instance().closeBehaviour, 2);
        QCOMPARE(stored("Buffer").toInt(), 2);
    }

    // Each widget is restyled once, however deep it lies.
    void changesTheSkinWithoutAFreeze()
    {
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window, 30000));
        const auto tabs = window.findChild<QtTabBar *>()->count();
        for (int i = 0; i < tabs; ++i)
            window.sltTabBarClicked(i, QString());
        class Counter : public QObject
        {
        public:
            bool eventFilter(QObject *watched, QEvent *event) override
            {
                if (event->type() == QEvent::StyleChange && ++changes[watched] > most)
                    most = changes[watched];
                return false;
            }
            QHash<QObject *, int> changes;
            int most = 0;
        } counter;
        qApp->installEventFilter(&counter);
        actionOf(window, QStringLiteral("浅色"))->trigger();
        QVERIFY2(counter.most >= 1 && counter.most <= 3, qPrintable(QString::number(counter.most)));
        QCOMPARE(window.findChild<QtTabBar *>()->palette().color(QPalette::WindowText), QColor("#333333"));
    }

    void unknownActionsDoNothing()
    {
        MainWindow window;
        const QByteArray before = configBytes();
        for (const auto *text : {"中文", "English", "别的"}) {
            QAction action(QString::fromUtf8(text));
            window.SltActionTrigger(&action);
            window.SltAboutMenuTrigger(&action);
        }
        QCOMPARE(configBytes(), before);
        QVERIFY(m_opened.isEmpty());
    }

    // "关于..." names the version; the menu's button is not pressed meanwhile.
    void aboutNamesTheVersion()
    {
        QCoreApplication::setApplicationVersion(QStringLiteral("1.0.2.6"));
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window, 30000));
        auto *button = window.findChild<QPushButton *>(QStringLiteral("btnHelpMenu"));
        QString shown;
        DialogAnswers::instance().message = [&](const QString &, const QString &text, int) {
            shown = button->isDown() ? QStringLiteral("pressed") : text;
            return 1;
        };
        QTimer look;
        connect(&look, &QTimer::timeout, &window, [&] {
            if (auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())) {
                look.stop();
                QTest::mouseClick(menu, Qt::LeftButton, {},
                                  menu->actionGeometry(actionOf(window, QStringLiteral("关于..."))).center());
            }
        });
        look.start(10);
        QTest::mouseClick(button, Qt::LeftButton);
        QTRY_VERIFY2_WITH_TIMEOUT(shown.contains(QStringLiteral("1.0.2.6")), qPrintable(shown), 30000);
    }

    // Cancelled, the colours stay; an area may follow the skin.
    void choosesColours()
    {
        MainWindow window;
        Settings &settings = Settings::instance();
        settings.recvBackground = QColor("#010203"); // would be applied
        const QString before = qApp->styleSheet();
        const auto visit = [&window](const std::function<void(QDialog *)> &act) {
            QTimer::singleShot(0, &window,
                               [act] { act(qobject_cast<QDialog *>(QApplication::activeModalWidget())); });
            actionOf(window, QStringLiteral("接收区设置"))->trigger();
        };
        visit([](QDialog *dialog) { dialog->reject(); });
        QCOMPARE(qApp->styleSheet(), before);
        visit([](QDialog *dialog) { dialog->accept(); });
        QVERIFY(qApp->styleSheet().contains(QStringLiteral("background-color: #010203")));
        visit([](QDialog *dialog) {
            dialog->findChild<QCheckBox *>(QStringLiteral("checkFollowSkin"))->click();
            dialog->accept();
        });
        actionOf(window, QStringLiteral("浅色"))->trigger();
        QVERIFY(qApp->styleSheet().startsWith(
            QStringLiteral("QtTerminalWidget#recvBrowser {background-color: #ffffff; color:#333333;")));
        QCOMPARE(stored("RecvBackground").toString(), QStringLiteral("#010203"));
        Settings::load(); // as the next start does
        Skin::apply(1);
        QCOMPARE(settings.recvBackground, QColor("#ffffff"));
        visit([](QDialog *dialog) {
            dialog->findChild<QPushButton *>(QStringLiteral("btnDefaultColors"))->click();
            dialog->accept();
        });
        QVERIFY(!settings.recvFollowsSkin);
        QCOMPARE(settings.recvBackground, QColor("#4b4b4b"));
    }

    void restoreAsks()
    {
        Settings::instance().textCodec.set(0);
        Settings::instance().closeBehaviour.set(2);
        Settings::load();
        Skin::apply(1);
        Settings::instance().skin = 1;
        MainWindow window;
        const QByteArray before = configBytes();
        QStringList asked;
        int answer = 0;
        DialogAnswers::instance().message = [&](const QString &title, const QString &text, int type) {
            asked += title + text + QString::number(type);
            return answer;
        };
        QAction *restore = actionOf(window, QStringLiteral("恢复默认设置"));
        restore->trigger();
        QCOMPARE(asked, QStringList{QStringLiteral("询问确认恢复默认设置吗?1")});
        QCOMPARE(configBytes(), before);
        QCOMPARE(Settings::instance().textCodec, 0);
        QVERIFY(!QtMessageTip::current());

        answer = 1;
        restore->trigger();
        QCOMPARE(Settings::instance().textCodec, 1);
        QCOMPARE(Skin::palette().name, QStringLiteral("default"));
        QCOMPARE(stored("Skin").toInt(), 0);
        QVERIFY(!stored("Buffer").isValid());
        QVERIFY(actionOf(window, QStringLiteral("关闭时不提醒"))->isChecked());
        QVERIFY(actionOf(window, QStringLiteral("深色"))->isChecked());
        QVERIFY(actionOf(window, QStringLiteral("GB18030"))->isChecked());
        QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("配置已恢复！"));
        QCOMPARE(QtMessageTip::current()->tipStyle(), QtMessageTip::Notice);
    }

    void helpOpensPages()
    {
        MainWindow window;
        QTest::mouseClick(window.findChild<QPushButton *>(QStringLiteral("btnHelp")), Qt::LeftButton);
        QCOMPARE(m_opened.size(), 1);
        actionOf(window, QStringLiteral("关于Orvane科技"))->trigger();
        QCOMPARE(m_opened.size(), 2);
        QVERIFY(m_opened.at(0) != m_opened.at(1));

        // The manual, where it is installed.
        QVERIFY(QDir(m_root->path()).mkpath(QStringLiteral("docs/manual")));
        QFile manual(m_root->filePath(QStringLiteral("docs/manual/zh_CN.md")));
        QVERIFY(manual.open(QIODevice::WriteOnly));
        QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "openUrl");
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window, 30000));
        QTest::keyClick(window.windowHandle(), Qt::Key_F1);
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
        QCOMPARE(m_opened.last(), QUrl::fromLocalFile(manual.fileName()).toString());
    }

    void noticesReachStatusBar()
    {
        MainWindow window;
        auto *label = window.findChild<StatusLabel *>();
        emit window.findChild<PidDebugWidget *>()->signalNotify(QStringLiteral("来自PID"), 0);
        QCOMPARE(label->fullText(), QStringLiteral("来自PID"));
        emit window.findChild<SerialportWidget *>()->signalNotify(QStringLiteral("来自串口"), 255);
        QCOMPARE(label->fullText(), QStringLiteral("来自串口"));
        QVERIFY(label->isError());
        emit window.findChild<CameraDebugWidget *>()->signalNotify(QStringLiteral("摄像头"), 255);
        emit window.findChild<NetworkToolWidget *>()->signalNotify(QStringLiteral("来自网络"), 255);
        QCOMPARE(label->fullText(), QStringLiteral("来自网络"));
    }

    // First all are asked, then all close, then all save, each once.
    void quitTakesThreeSteps()
    {
        QStringList steps;
        StepPage a(QStringLiteral("a"), &steps), b(QStringLiteral("b"), &steps);
        QuitGuard guard;
        guard.setPages({&a, &b});
        const auto takes = [&steps](const char *expected) {
            return steps.join(QLatin1Char(' ')) == QLatin1String(expected) && (steps.clear(), true);
        };
        b.agrees = false;
        QVERIFY(!guard.mayQuit());
        QVERIFY(takes("a? b?"));
        b.agrees = true;
        // Another way out while a question is open: not asked again, stays open.
        bool nested = true;
        b.whileAsked = [&] { nested = guard.mayQuit(); };
        a.saves = false;
        QVERIFY(!guard.mayQuit());
        QVERIFY(!nested);
        QVERIFY(takes("a? b? ax bx as"));
        a.saves = true;
        QVERIFY(guard.mayQuit());
        QVERIFY(takes("a? b? ax bx as bs"));
        guard.end();
        QVERIFY(guard.mayQuit());
        QVERIFY(takes(""));
    }

    // Links that need time are waited for, until the user does not want to.
    void quitWaitsForLinks()
    {
        QStringList steps;
        StepPage a(QStringLiteral("a"), &steps), b(QStringLiteral("b"), &steps);
        QuitGuard guard;
        guard.setPages({&a, &b});
        const QSignalSpy waits(&guard, &QuitGuard::waiting);
        a.whileClosing = [&] {
            a.whileClosing = nullptr;
            emit a.signalClosed();
        };
        QVERIFY(guard.mayQuit());
        QCOMPARE(steps.join(QLatin1Char(' ')), QStringLiteral("a? b? ax bx as bs"));
        QCOMPARE(waits.count(), 2);
        guard.stay();
        bool second = true;
        b.whileClosing = [&] { second = guard.mayQuit(); };
        QVERIFY(guard.mayQuit());
        QVERIFY(!second);
        QCOMPARE(steps.count(QStringLiteral("bs")), 2);
    }

    // Another program may cancel a log-off: links stay open, the next one asks
    // and saves again, and the end of the loop saves what came since.
    void logOffMayBeCancelled()
    {
        QStringList steps;
        StepPage a(QStringLiteral("a"), &steps);
        QuitGuard guard;
        guard.setPages({&a});
        QVERIFY(guard.mayEndSession());
        QVERIFY(guard.mayEndSession());
        guard.end();
        QCOMPARE(steps.join(QLatin1Char(' ')), QStringLiteral("a? as a? as ax as"));
        guard.stay();
        steps.clear();
        QVERIFY(guard.mayEndSession());
        QVERIFY(guard.mayQuit()); // the user closes the window after all
        QCOMPARE(steps.join(QLatin1Char(' ')), QStringLiteral("a? as a? ax as"));
    }

#ifdef Q_OS_UNIX
    // Bytes from the wire: counts only of the page on display, cleared by the
    // button; then the ways out, with the question asked once.
    void countsAndClosing()
    {
        const int master = posix_openpt(O_RDWR | O_NOCTTY);
        QVERIFY(master >= 0 && grantpt(master) == 0 && unlockpt(master) == 0);
        const QString device = QString::fromLocal8Bit(ptsname(master));

        Settings::instance().closeBehaviour = Settings::Ask;
        auto window = std::make_unique<MainWindow>();
        window->show();
        QCOMPARE(countText(*window, "sentCount"), QStringLiteral("发送字节数: 0"));
        auto *serial = window->findChild<SerialportWidget *>();
        serial->SltSerialportChanged({device + QStringLiteral(" 测试")});
        serial->SltOpenSerialport();
        QCOMPARE(::write(master, "hello", 5), ssize_t(5));
        QTRY_COMPARE_WITH_TIMEOUT(countText(*window, "receivedCount"), QStringLiteral("接收字节数: 5"),
                                  30000);

        auto *tabs = window->findChild<QtTabBar *>();
        tabs->setCurrentIndex(3);
        QVERIFY(countText(*window, "receivedCount").isEmpty());
        QCOMPARE(::write(master, "more", 4), ssize_t(4));
        QTRY_COMPARE_WITH_TIMEOUT(serial->counts().value(1), QStringLiteral("9"), 30000);
        emit serial->signalRefresCounts(0);
        QVERIFY(countText(*window, "receivedCount").isEmpty());
        auto *clear = window->findChild<QPushButton *>(QStringLiteral("btnClearCount"));
        QTest::mouseClick(clear, Qt::LeftButton); // clears the PID page, which counts nothing
        QCOMPARE(serial->counts().value(1), QStringLiteral("9"));
        tabs->setCurrentIndex(0);
        QCOMPARE(countText(*window, "receivedCount"), QStringLiteral("接收字节数: 9"));
        QTest::mouseClick(clear, Qt::LeftButton);
        QCOMPARE(countText(*window, "receivedCount"), QStringLiteral("接收字节数: 0"));
        QCOMPARE(serial->counts().value(1), QStringLiteral("0"));

        // The data is unsaved: "保存" leads to the file dialog, and cancelling
        // that keeps the program open.
        int asked = 0;
        int answer = QtMessageBox::Save;
        DialogAnswers::instance().message = [&](const QString &, const QString &text, int) {
            asked += text == QStringLiteral("当前有数据未保存，是否保存接收数据?");
            return answer;
        };
        DialogAnswers::instance().fileNames = [](DialogAnswers::FileMode, const QString &, const QString &,
                                                 const QString &) { return QStringList(); };
        window->close();
        QCOMPARE(asked, 1);
        QVERIFY(window->isVisible());
        answer = QtMessageBox::Cancel;
        QVERIFY(!window->prepareToQuit());
        QCOMPARE(asked, 2);

        // Agreed: the event loop ends, and neither the session's end nor the
        // end of the loop asks again.
        answer = QtMessageBox::Discard;
        QTimer::singleShot(0, window.get(), &MainWindow::close);
        QCOMPARE(QApplication::exec(), 0);
        QCOMPARE(asked, 3);
        QVERIFY(window->prepareToQuit());
        window.reset();
        QCOMPARE(asked, 3);
        ::close(master);
    }
#endif

    void exitByMenuAndTitleBar()
    {
        MainWindow window;
        QTimer::singleShot(0, &window, [&] { actionOf(window, QStringLiteral("退出"))->trigger(); });
        QCOMPARE(QApplication::exec(), 0);
        QTimer::singleShot(0, &window, [&] { emit window.findChild<QtTitleBar *>()->signalCloseWindow(); });
        QCOMPARE(QApplication::exec(), 0);
    }

    void panelsFitTheWindow_data()
    {
        QTest::addColumn<int>("tool");
        QTest::addColumn<QString>("box");
        QTest::addColumn<int>("protocol");
        QTest::newRow("serial") << 0 << QString() << 0;
        QTest::newRow("camera by TCP") << 1 << QStringLiteral("comboCameraProtocol") << 0;
        QTest::newRow("camera by serial port") << 1 << QStringLiteral("comboCameraProtocol") << 3;
        QTest::newRow("TCP server") << 2 << QStringLiteral("comboNetType") << 0;
        QTest::newRow("TCP client") << 2 << QStringLiteral("comboNetType") << 1;
        QTest::newRow("UDP") << 2 << QStringLiteral("comboNetType") << 2;
        QTest::newRow("PID") << 3 << QString() << 0;
    }

    // As the program starts: everything in sight. In the smallest window only
    // what is below can be scrolled to.
    void panelsFitTheWindow()
    {
        QFETCH(int, tool);
        QFETCH(QString, box);
        QFETCH(int, protocol);
        QApplication::setFont(QFont(Fonts::uiFamily(), 9));
        MainWindow window;
        auto *stack = window.findChild<QStackedWidget *>();
        stack->setCurrentIndex(tool);
        if (!box.isEmpty())
            window.findChild<QComboBox *>(box)->setCurrentIndex(protocol);
        auto *panel = stack->currentWidget()->findChild<FormPanel *>();
        window.resize(1000, 550);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTRY_COMPARE(panel->verticalScrollBar()->maximum(), 0);
        QTRY_COMPARE(panel->width(), int(FormPanel::panelWidth));
        window.resize(800, 500);
        QTRY_COMPARE(stack->width(), 798);
        QTRY_COMPARE(panel->widget()->width(), panel->viewport()->width());
        QVERIFY(panel->widget()->minimumSizeHint().width() <= panel->viewport()->width());
    }

    void keysOpenTheLinkAndFoldThePanelOfThePageShown()
    {
        MainWindow window;
        auto *stack = window.findChild<QStackedWidget *>();
        for (const char *port : {"editPort", "editCameraPort"}) // opens nothing
            window.findChild<QLineEdit *>(QLatin1String(port))->setText(QStringLiteral("0"));
        window.show();
        QApplication::setActiveWindow(&window);
        QVERIFY(QTest::qWaitForWindowActive(&window));
        const char *const buttons[] = {"btnOpen", "btnCameraOpen", "btnOpen", "btnPidOpen", "btnFold"};
        for (int tool = 0; tool < stack->count(); ++tool) {
            stack->setCurrentIndex(tool);
            auto *page = stack->currentWidget();
            QSignalSpy opened(page->findChild<QPushButton *>(QLatin1String(buttons[tool])),
                              &QPushButton::clicked);
            auto *panel = page->findChild<FormPanel *>();
            QTest::keyClick(&window, Qt::Key_F5);
            QCOMPARE(opened.count(), tool < 4 ? 1 : 0); // the editor opens no link
            opened.clear();
            QTest::keyClick(&window, Qt::Key_B, Qt::ControlModifier);
            QVERIFY(!panel->isVisible());
            QTest::keyClick(&window, Qt::Key_B, Qt::ControlModifier);
            QVERIFY(panel->isVisible());
            QCOMPARE(opened.count(), tool < 4 ? 0 : 2);
        }
    }

    // For screen readers.
    void everyFieldHasAName()
    {
        MainWindow window;
        const auto widgets = window.findChildren<QWidget *>();
        for (const QWidget *widget : widgets) {
            const bool isField =
                qobject_cast<const QComboBox *>(widget) || qobject_cast<const QAbstractSpinBox *>(widget) ||
                qobject_cast<const QLineEdit *>(widget) || qobject_cast<const QTextEdit *>(widget);
            if (isField && (widget->focusPolicy() & Qt::TabFocus) && !widget->focusProxy())
                QVERIFY2(!widget->accessibleName().isEmpty(), qPrintable(widget->objectName()));
        }
    }

private:
    std::unique_ptr<QTemporaryDir> m_root;
    QStringList m_opened;
};

QTEST_MAIN(MainWindowTest)
#include "test_mainwindow.moc"
