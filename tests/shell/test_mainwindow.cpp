// The main window with its real pages: routing of counts and notices, menus
// and settings, the ways out.

#include "apppaths.h"
#include "dialoganswers.h"
#include "fonts.h"
#include "formpanel.h"
#include "freeport.h"
#include "freshfolder.h"
#include "hexeditwidget.h"
#include "korvexresources.h"
#include "launchoptions.h"
#include "mainwindow.h"
#include "networktoolwidget.h"
#include "qhexedit.h"
#include "qserialporcheck.h"
#include "qtcountlabel.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "qttabbar.h"
#include "qtterminalwidget.h"
#include "qttitlebar.h"
#include "qtupdatedialog.h"
#include "serialportwidget.h"
#include "settings.h"
#include "skin.h"
#include "statuslabel.h"
#include "testfiles.h"
#include "waitfor.h"
#ifdef Q_OS_UNIX
#include "ptypeer.h"
#endif

#include <QtTest>
#include <QtWidgets>

class MainWindowTest : public QObject
{
    Q_OBJECT

public slots:
    void openUrl(const QUrl &url) { m_opened += url.toString(); }

private slots:
    void initTestCase()
    {
        initKorvexResources();
        for (const char *scheme : {"https", "file"})
            QDesktopServices::setUrlHandler(scheme, this, "openUrl");
    }
    void init()
    {
        m_root = std::make_unique<FreshFolder>();
        Settings::writeDefaults();
        Settings::load();
        Skin::apply(0);
        m_opened.clear();
        makeWindow();
    }
    void cleanup()
    {
        m_window.reset();
        DialogAnswers::instance() = {};
        if (QtMessageTip::current())
            QtMessageTip::current()->close();
    }

    void tabsChangeTools()
    {
        show();
        const auto pressed = [this](Qt::Key key, Qt::KeyboardModifiers modifiers) {
            QTest::keyClick(m_window->windowHandle(), key, modifiers);
            return m_stack->currentIndex();
        };
        const QPoint middle = m_tabs->rect().center();
        QWheelEvent wheel(middle, m_tabs->mapToGlobal(middle), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(m_tabs, &wheel);
        QVERIFY(m_stack->currentIndex() == 0 && !m_tabs->tabIcon(4).isNull());
        QVERIFY(m_tabs->tabToolTip(4).endsWith("(Ctrl+5)") && !QApplication::quitOnLastWindowClosed());
        QTest::mouseClick(m_tabs, Qt::LeftButton, {}, m_tabs->tabRect(2).center());
        QCOMPARE(m_stack->currentIndex(), 2);
        QVERIFY(isAccented(2) && !isAccented(0));
        QCOMPARE(pressed(Qt::Key_Tab, Qt::ControlModifier), 3);
        QCOMPARE(pressed(Qt::Key_5, Qt::ControlModifier), 4);
        QCOMPARE(pressed(Qt::Key_Tab, Qt::ControlModifier), 0);
        QCOMPARE(pressed(Qt::Key_Tab, Qt::ControlModifier | Qt::ShiftModifier), 4);
        QCOMPARE(m_tabs->currentIndex(), 4);
        m_window->findChild<QToolButton *>("btnMaximize")->click();
        QTRY_VERIFY(m_window->isMaximized());
    }

    void checksFollowSettings()
    {
        Settings &settings = Settings::instance();
        settings.textCodec.set(0);
        settings.skin.set(2);
        settings.closeBehaviour.set(Settings::Ask);
        makeWindow();
        QCOMPARE(checked(), QString("UTF-8 黄色 关闭时提醒"));
        show();
        for (const auto &[key, name] : {std::pair{QKeySequence(Qt::Key_F10), "settingsMenu"},
                                        {QKeySequence("Alt+S"), "settingsMenu"},
                                        {QKeySequence("Alt+H"), "helpMenu"}}) {
            QString opened;
            QTimer look;
            connect(&look, &QTimer::timeout, this, [&] {
                if (QWidget *menu = QApplication::activePopupWidget(); menu && menu->close())
                    opened = menu->objectName();
            });
            look.start(10);
            // The menu before was the active window.
            QVERIFY(QTest::qWaitForWindowActive(m_window.get(), 30000));
            QTest::keySequence(m_window->windowHandle(), key);
            QCOMPARE(opened, QString(name));
        }
        action("深色")->trigger();
        QCOMPARE(checked(), QString("UTF-8 深色 关闭时提醒"));
        for (const char *text : {"GB18030", "浅色", "自动保存"})
            action(text)->trigger();
        QCOMPARE(checked(), QString("GB18030 浅色 自动保存"));
        QCOMPARE(Skin::palette().name, QString("white"));
        QCOMPARE(m_window->findChild<QHexEdit *>()->content().shownCodec(), 1);
        Settings::load(); // as the next start does
        QCOMPARE(QList<int>({settings.textCodec, settings.skin, settings.closeBehaviour}),
                 QList<int>({1, 1, 2}));
    }

    // In the settings menu, in the status bar, and where received text asks for it.
    void codecIsAtHand()
    {
        const auto *button = m_window->findChild<QPushButton *>("btnCodec");
        const QList<QAction *> codecs = button->menu()->actions();
        QCOMPARE(button->text(), QString("GB18030"));
        auto *serial = m_window->findChild<SerialportWidget *>();
        const auto *bar = serial->findChild<QWidget *>("codecBar");
        const QByteArray text = QString("温度 25.3 转速 1500\n").repeated(100).toUtf8();
        serial->findChild<QtTerminalWidget *>()->showReceived(text, {}, false);
        QVERIFY(!bar->isHidden());
        QCOMPARE(bar->findChild<QLabel *>()->text(), QString("接收的数据看起来是UTF-8编码"));
        bar->findChild<QPushButton *>("btnCodecSwitch")->click();
        QVERIFY(bar->isHidden());
        QCOMPARE(button->text(), QString("UTF-8"));
        QCOMPARE(checked(), QString("UTF-8 深色 关闭时不提醒"));
        codecs.at(1)->trigger();
        QCOMPARE(button->text(), QString("GB18030"));
    }

    // A widget that is restyled once for each of its parents freezes the window.
    void restylesEachWidgetOnce()
    {
        show();
        for (int i = 0; i < m_tabs->count(); ++i)
            m_window->sltTabBarClicked(i, QString());
        class Counter : public QObject
        {
        public:
            bool eventFilter(QObject *watched, QEvent *event) override
            {
                if (event->type() == QEvent::StyleChange)
                    max = qMax(max, ++changes[watched]);
                return false;
            }
            QHash<QObject *, int> changes;
            int max = 0;
        } counter;
        const auto icon = [this](const char *name) {
            return m_window->findChild<QAbstractButton *>(name)->icon().pixmap(16).toImage();
        };
        const auto tab = [this] { return m_tabs->tabIcon(1).pixmap(16).toImage(); };
        const QImage dark[] = {icon("btnClose"), icon("btnOpenFile"), tab()};
        qApp->installEventFilter(&counter);
        action("浅色")->trigger();
        QVERIFY(tab() != dark[2] && icon("btnClose") != dark[0] && icon("btnOpenFile") != dark[1]);
        QVERIFY2(counter.max >= 1 && counter.max <= 3, qPrintable(QString::number(counter.max)));
        QCOMPARE(m_tabs->palette().color(QPalette::WindowText), QColor("#333333"));
        // A title bar on a ground of its own has icons of its own color.
        const QImage before = icon("btnClose");
        m_window->findChild<QtTitleBar *>()->setIconColor(Qt::red);
        QVERIFY(icon("btnClose") != before);
    }

    // A dialog of a menu opens when the menu's button is up again.
    void aboutNamesTheVersion()
    {
        QCoreApplication::setApplicationVersion("1.2.3.4");
        show();
        auto *button = m_window->findChild<QPushButton *>("btnHelpMenu");
        QString shown;
        DialogAnswers::instance().message = [&](const QString &, const QString &text, int) {
            shown = button->isDown() ? QString("pressed") : text;
            return 1;
        };
        QTimer look;
        connect(&look, &QTimer::timeout, this, [&] {
            if (auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())) {
                look.stop();
                QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action("关于...")).center());
            }
        });
        look.start(10);
        QTest::mouseClick(button, Qt::LeftButton);
        QTRY_VERIFY2_WITH_TIMEOUT(shown.contains("1.2.3.4"), qPrintable(shown), 30000);
    }

    // An area may follow the skin.
    void choosesColors()
    {
        Settings &settings = Settings::instance();
        settings.recvBackground.set(QColor("#010203")); // applied with the next choice only
        const auto visit = [this](const char *button, const char *area = "接收区设置") {
            QTimer::singleShot(0, this, [=] {
                auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
                if (button)
                    dialog->findChild<QAbstractButton *>(button)->click();
                dialog->accept();
                QCOMPARE(dialog->windowTitle(), QString(area));
            });
            action(area)->trigger();
        };
        visit(nullptr);
        QVERIFY(qApp->styleSheet().contains("background-color: #010203"));
        visit("checkFollowSkin");
        action("浅色")->trigger();
        QVERIFY(qApp->styleSheet().startsWith(
            "QtTerminalWidget#recvBrowser {background-color: #ffffff; color:#333333;"));
        Settings::load(); // as the next start does: the user's own color is kept
        QCOMPARE(settings.recvBackground, QColor("#010203"));
        Skin::apply(1);
        QCOMPARE(settings.recvBackground, QColor("#ffffff"));
        visit("btnDefaultColors");
        visit(nullptr, "发送区设置");
        QVERIFY(!settings.recvFollowsSkin);
        QCOMPARE(settings.recvBackground, QColor("#4b4b4b"));
    }

    void restoringAsks()
    {
        for (const char *text : {"UTF-8", "浅色", "自动保存"})
            action(text)->trigger();
        auto *field = m_window->findChild<QAbstractButton *>("checkPidFitAll"); // of a page
        field->click();
        Settings::instance().colorRules.set("rules of the user");
        const auto *edit = m_window->findChild<QHexEdit *>();
        const QByteArray before = contentOf(AppPaths::configFile());
        QString asked;
        int answer = 0;
        DialogAnswers::instance().message = [&](const QString &title, const QString &text, int type) {
            asked = title + text + QString::number(type);
            return answer;
        };
        action("恢复默认设置")->trigger();
        QCOMPARE(asked, QString("询问确认恢复默认设置吗?1"));
        QCOMPARE(contentOf(AppPaths::configFile()), before);
        QVERIFY(!QtMessageTip::current());
        answer = 1;
        action("恢复默认设置")->trigger();
        QCOMPARE(checked(), QString("GB18030 深色 关闭时不提醒"));
        QCOMPARE(m_window->findChild<QPushButton *>("btnCodec")->text(), QString("GB18030"));
        QCOMPARE(Settings::instance().colorRules, QString("rules of the user"));
        QVERIFY(!field->isChecked() && edit->content().shownCodec() == 1);
        QCOMPARE(Skin::palette().name, QString("default"));
        QCOMPARE(QtMessageTip::current()->text(), QString("配置已恢复！"));
        QCOMPARE(QtMessageTip::current()->tipStyle(), QtMessageTip::Notice);
        AppPaths::setRoot(AppPaths::configFile()); // a file: nothing can be written below it
        action("UTF-8")->trigger();
        QCOMPARE(m_notice->fullText(), QString("设置无法保存，仅本次运行有效：程序目录下无法建立文件夹conf"));
        action("恢复默认设置")->trigger();
        QCOMPARE(QtMessageTip::current()->text(), QString("配置文件无法写入，仅本次运行恢复默认设置！"));
    }

    void helpOpensPages()
    {
        m_window->findChild<QPushButton *>("btnHelp")->click();
        action("关于Orvane科技")->trigger();
        QCOMPARE(m_opened.size(), 2);
        QStringList titles;
        QTimer closer;
        connect(&closer, &QTimer::timeout, this, [&titles] {
            if (auto *dialog = QApplication::activeModalWidget()) {
                titles += dialog->windowTitle();
                dialog->close();
            }
        });
        closer.start(1);
        for (const char *entry : {"接收区设置", "发送区设置"}) {
            action(entry)->trigger();
            QTRY_COMPARE(titles.value(titles.size() - 1), entry);
        }
        closer.stop();
        QVERIFY(m_opened.at(0) != m_opened.at(1));
        // The manual, where it is installed.
        QVERIFY(QDir(m_root->path()).mkpath("docs/manual"));
        const QString manual = m_root->filePath("docs/manual/zh_CN.md");
        QVERIFY(writeFile(manual, "manual"));
        show();
        QTest::keyClick(m_window->windowHandle(), Qt::Key_F1);
        QCOMPARE(m_opened.last(), QUrl::fromLocalFile(manual).toString());
        QVERIFY(m_notice->fullText().isEmpty());
        QDesktopServices::setUrlHandler("file", this, "missing");
        QTest::keyClick(m_window->windowHandle(), Qt::Key_F1);
        QCOMPARE(m_notice->fullText(), QString("系统中没有可打开[%1]的程序！").arg(manual));
    }

    void everyPageReachesTheStatusBar()
    {
        auto *count = m_window->findChild<QtCountLabel *>("sentCount");
        for (int i = 0; i < m_stack->count(); ++i) {
            auto *page = qobject_cast<QtWidgetBase *>(m_stack->widget(i));
            emit page->signalNotify(QString::number(i), 255);
            QCOMPARE(m_notice->fullText(), QString::number(i));
            QVERIFY(m_notice->isError());
            m_stack->setCurrentIndex(i);
            count->setText("before");
            emit page->signalRefresCounts(i);
            QVERIFY(count->text() != "before");
        }
        emit m_window->findChild<QSerialPorCheck *>()->signalSerialChanged({"COM9 board"});
        for (const char *ports : {"comboPort", "comboCameraSerialPort", "comboPidPort"})
            QVERIFY(m_window->findChild<QComboBox *>(ports)->findText("COM9 board") >= 0);
    }

#ifdef Q_OS_UNIX
    // The first look at the ports comes a second after the start.
    void keepsOpenWhatTheCommandLineOpened()
    {
        PtyPeer board;
        QTemporaryDir ports;
        QVERIFY(QFile::link(board.device(), ports.filePath("COM3")));
        qputenv("KORVEX_VIRTUAL_PORTS", ports.path().toLocal8Bit());
        show();
        m_tabs->setCurrentIndex(2);
        const QString log = ports.filePath("board.log");
        m_window->launch(LaunchOptions::parse({"--port", "COM3", "--baud", "9600", "--open", "--log", log}));
        m_window->findChild<QSerialPorCheck *>()->SltCheckSerialport();
        QCOMPARE(m_tabs->currentIndex(), 0);
        QVERIFY(!m_window->findChild<SerialportWidget *>()->isClosed());
        QCOMPARE(m_window->findChild<QComboBox *>("comboBaudRate")->currentText(), QString("9600"));
        QVERIFY(board.write("hello\n"));
        WAIT_FOR(contentOf(log).endsWith(" RX hello\n"));
        WAIT_FOR(m_window->findChild<QLabel *>("labelLogLamp")->isVisible());
        qunsetenv("KORVEX_VIRTUAL_PORTS");
        const QString other = ports.filePath("net.log");
        m_window->launch(LaunchOptions::parse({"--tool", "network", "--profile", "none", "--log", other}));
        QCOMPARE(m_tabs->currentIndex(), 2);
        QVERIFY(m_notice->fullText().startsWith("方案[none]未选用"));
        auto *network = m_window->findChild<NetworkToolWidget *>();
        QVERIFY(network->isClosed() && network->findChild<QCheckBox *>("checkLogAppend")->isChecked());
        QCOMPARE(network->findChild<QLineEdit *>("editLogFile")->text(), other);
        network->findChild<QComboBox *>("comboNetType")->setCurrentIndex(2);
        network->findChild<QLineEdit *>("editPort")->setText(QString::number(freePort()));
        m_window->launch(LaunchOptions::parse({"--tool", "network", "--open"}));
        WAIT_FOR(!network->isClosed() && QFile::exists(other));
        m_window->launch(LaunchOptions::parse({log}));
        WAIT_FOR(m_window->findChild<QHexEdit *>()->size() > 0);
    }

    // Bytes from the wire: counts only of the page on display, cleared by the
    // button; then the ways out, with the question asked once.
    void countsAndClosing()
    {
        PtyPeer board;
        Settings::instance().closeBehaviour.set(Settings::Ask);
        show();
        const auto count = [this](const char *name) {
            return m_window->findChild<QtCountLabel *>(name)->text();
        };
        QCOMPARE(count("sentCount"), QString("发送字节数: 0"));
        auto *serial = m_window->findChild<SerialportWidget *>();
        serial->SltSerialportChanged({board.device()});
        serial->SltOpenSerialport();
        QVERIFY(board.write("hello"));
        QTRY_COMPARE_WITH_TIMEOUT(count("receivedCount"), QString("接收字节数: 5"), 30000);
        QCOMPARE(count("sentCount"), QString("发送字节数: 0"));
        QVERIFY(m_notice->fullText().contains("打开成功"));
        m_tabs->setCurrentIndex(3);
        QVERIFY(count("receivedCount").isEmpty() && m_notice->fullText().isEmpty());
        QVERIFY(board.write("more"));
        QTRY_COMPARE_WITH_TIMEOUT(serial->counts().value(1), QString("9"), 30000);
        emit serial->signalRefresCounts(0);
        QVERIFY(count("receivedCount").isEmpty());
        auto *clear = m_window->findChild<QPushButton *>("btnClearCount");
        clear->click(); // clears the PID page, which counts nothing
        m_tabs->setCurrentIndex(0);
        QCOMPARE(count("receivedCount"), QString("接收字节数: 9"));
        clear->click();
        QCOMPARE(count("receivedCount"), QString("接收字节数: 0"));

        // The data is unsaved: "保存" leads to the file dialog, and cancelling
        // that keeps the program open.
        int asked = 0;
        int answer = QtMessageBox::Save;
        DialogAnswers::instance().message = [&](const QString &, const QString &text, int) {
            asked += text == "当前有数据未保存，是否保存接收数据?";
            return answer;
        };
        DialogAnswers::instance().fileNames = [](auto, auto, auto, auto) { return QStringList(); };
        m_window->close();
        QCOMPARE(asked, 1);
        QVERIFY(m_window->isVisible());
        answer = QtMessageBox::Cancel;
        QVERIFY(!m_window->prepareToQuit());
        QCOMPARE(asked, 2);
        // Agreed for an update, which then can't be started: asked again later.
        answer = QtMessageBox::Discard;
        QVERIFY(m_window->prepareToQuit());
        QTimer::singleShot(0, this, [this] {
            auto *update = m_window->findChild<QtUpdateDialog *>();
            emit update->stayedOpen();
            update->close();
        });
        action("检查版本更新")->trigger();
        // Agreed: the event loop ends, and its end asks no more.
        QTimer::singleShot(0, m_window.get(), &MainWindow::close);
        QCOMPARE(QApplication::exec(), 0);
        m_window.reset();
        QCOMPARE(asked, 4);
    }
#endif

    // The second time with a file to save, which is waited for with the pages disabled.
    void exitsByMenuAndTitleBar()
    {
        QTimer::singleShot(0, this, [this] { action("退出")->trigger(); });
        QCOMPARE(QApplication::exec(), 0);
        makeWindow();
        const QString large = m_root->filePath("rom.bin");
        QVERIFY(writeFile(large, QByteArray(64 << 20, 'x')));
        auto *page = m_window->findChild<HexEditWidget *>();
        page->openFile(large);
        QTRY_VERIFY_WITH_TIMEOUT(!page->findChild<QHexEdit *>()->task()->isRunning(), 60000);
        QTest::keyClicks(page->findChild<QHexEdit *>(), "41");
        DialogAnswers::instance().message = [](auto...) { return QtMessageBox::Save; };
        bool waited = false;
        connect(page, &QtWidgetBase::signalClosed, this, [&] {
            waited = !m_stack->isEnabled() && m_notice->fullText().contains("再次关闭窗口可立即退出");
        });
        QTimer::singleShot(0, this,
                           [this] { emit m_window->findChild<QtTitleBar *>()->signalCloseWindow(); });
        QCOMPARE(QApplication::exec(), 0);
        QVERIFY(waited && contentOf(large).startsWith("Ax"));
    }

    // As the program starts: everything in sight. In the smallest window only
    // what is below can be scrolled to.
    void comesBackToItsPlace()
    {
        makeWindow();
        m_window->restorePlace();
        show();
        m_tabs->setCurrentIndex(3);
        m_window->setGeometry(40, 60, 900, 520);
        Settings::WindowPlace &place = Settings::instance().window;
        QTRY_COMPARE(place.geometry, QStringLiteral("40 60 900 520"));
        makeWindow();
        m_window->restorePlace();
        QCOMPARE(m_window->geometry(), QRect(40, 60, 900, 520));
        QCOMPARE(m_stack->currentIndex(), 3);
        // Of a screen that is not there any more, or only touched.
        for (const char *lost : {"5000 60 900 520", "-850 60 900 520", "40 -500 900 520", "1 2 3"}) {
            place.geometry = QString(lost);
            makeWindow();
            const QRect usual = m_window->geometry();
            m_window->restorePlace();
            QCOMPARE(m_window->geometry(), usual);
        }
    }

    void panelsFitTheWindow()
    {
        const std::tuple<int, const char *, int> rows[] = {{0, nullptr, 0},
                                                           {1, "comboCameraProtocol", 0},
                                                           {1, "comboCameraProtocol", 3}, // serial port
                                                           {2, "comboNetType", 0},
                                                           {2, "comboNetType", 2}, // UDP
                                                           {3, nullptr, 0}};
        QApplication::setFont(QFont(Fonts::uiFamily(), 9));
        makeWindow();
        show();
        for (const auto &[tool, box, protocol] : rows) {
            m_stack->setCurrentIndex(tool);
            if (box)
                m_window->findChild<QComboBox *>(box)->setCurrentIndex(protocol);
            auto *panel = m_stack->currentWidget()->findChild<FormPanel *>();
            m_window->resize(1000, 550);
            WAIT_EQUAL(panel->verticalScrollBar()->maximum(), 0);
            WAIT_EQUAL(panel->width(), int(FormPanel::panelWidth));
            m_window->resize(800, 500);
            WAIT_EQUAL(m_stack->width(), 798);
            WAIT_FOR(m_tabs->tabRect(m_stack->count() - 1).right() < 800);
            WAIT_EQUAL(panel->widget()->width(), panel->viewport()->width());
            WAIT_FOR(panel->widget()->minimumSizeHint().width() <= panel->viewport()->width());
        }
    }

    void keysOpenTheLinkAndFoldThePanelOfThePageShown()
    {
        for (const char *port : {"editPort", "editCameraPort"}) // opens nothing
            m_window->findChild<QLineEdit *>(port)->setText("0");
        show();
        const char *const buttons[] = {"btnOpen", "btnCameraOpen", "btnOpen", "btnPidOpen", "btnFold"};
        for (int tool = 0; tool < m_stack->count(); ++tool) {
            m_stack->setCurrentIndex(tool);
            auto *page = m_stack->currentWidget();
            const QSignalSpy opened(page->findChild<QPushButton *>(buttons[tool]), &QPushButton::clicked);
            auto *panel = page->findChild<FormPanel *>();
            QTest::keyClick(m_window.get(), Qt::Key_F5);
            QCOMPARE(opened.count(), tool < 4 ? 1 : 0); // the editor opens no link
            for (const bool visible : {false, true}) {
                QTest::keyClick(m_window.get(), Qt::Key_B, Qt::ControlModifier);
                QCOMPARE(panel->isVisible(), visible);
            }
        }
    }

private:
    void makeWindow()
    {
        m_window.reset();
        m_window = std::make_unique<MainWindow>();
        m_tabs = m_window->findChild<QtTabBar *>();
        m_stack = m_window->findChild<QStackedWidget *>("pageStack");
        m_notice = m_window->findChild<StatusLabel *>();
    }
    void show()
    {
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get(), 30000));
    }
    QAction *action(const QString &text) const
    {
        const auto actions = m_window->findChildren<QAction *>();
        const auto found = std::find_if(actions.begin(), actions.end(),
                                        [&text](const QAction *action) { return action->text() == text; });
        return found == actions.end() ? nullptr : *found;
    }
    bool isAccented(int tab) const
    {
        const QImage icon = m_tabs->tabIcon(tab).pixmap(16).toImage();
        int pixels = 0;
        for (int i = 0; i < 256; ++i)
            pixels += icon.pixelColor(i % 16, i / 16) == QColor(Skin::palette().accent);
        return pixels > 0;
    }
    // The checked items of the menu as it opens.
    QString checked() const
    {
        auto *menu = m_window->findChild<QMenu *>("settingsMenu");
        emit menu->aboutToShow();
        QStringList texts;
        const auto actions = menu->findChildren<QAction *>();
        for (const QAction *action : actions)
            if (action->isChecked())
                texts += action->text();
        return texts.join(' ');
    }

    std::unique_ptr<FreshFolder> m_root;
    std::unique_ptr<MainWindow> m_window;
    QtTabBar *m_tabs = nullptr;
    QStackedWidget *m_stack = nullptr;
    StatusLabel *m_notice = nullptr;
    QStringList m_opened;
};

QTEST_MAIN(MainWindowTest)
#include "test_mainwindow.moc"
