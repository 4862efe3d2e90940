#include "mainwindow.h"

#include "apppaths.h"
#include "cameradebugwidget.h"
#include "fieldbehavior.h"
#include "hexeditwidget.h"
#include "iconfont.h"
#include "launchoptions.h"
#include "networktoolwidget.h"
#include "piddebugwidget.h"
#include "qserialporcheck.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "qtstatusbar.h"
#include "qttabbar.h"
#include "qttitlebar.h"
#include "qtupdatedialog.h"
#include "serialportwidget.h"
#include "settings.h"
#include "skin.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QPushButton>
#include <QSessionManager>
#include <QShortcut>
#include <QStackedWidget>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>

namespace {

const auto kRecvColors = QStringLiteral("接收区设置");
const auto kSendColors = QStringLiteral("发送区设置");
const auto kRestore = QStringLiteral("恢复默认设置");
const auto kExit = QStringLiteral("退出");
const QStringList kCodecs{QStringLiteral("UTF-8"), QStringLiteral("GB18030")};
const QStringList kSkins{QStringLiteral("深色"), QStringLiteral("浅色"), QStringLiteral("黄色")};
const QStringList kCloseBehaviours{QStringLiteral("关闭时不提醒"), QStringLiteral("关闭时提醒"),
                                   QStringLiteral("自动保存")};
const auto kAbout = QStringLiteral("关于...");
const auto kCheckUpdate = QStringLiteral("检查版本更新");
const auto kAboutMaker = QStringLiteral("关于Orvane科技");
const auto kHelpPage = QStringLiteral("https://www.orvane.example/korvex/help");
const auto kMakerSite = QStringLiteral("https://www.orvane.example/");

void check(QActionGroup *group, int index)
{
    const QList<QAction *> actions = group->actions();
    for (int i = 0; i < actions.size(); ++i)
        actions.at(i)->setChecked(i == index);
}

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QtMainWindow(parent)
    , m_memory(this)
{
    setObjectName(QStringLiteral("MainWindow"));
    setWindowIcon(QIcon(QStringLiteral(":/resources/images/app_logo.png")));
    setWindowTitle(QStringLiteral("Orvane多功能调试助手"));
    buildUi();
    connectPages();
    m_portChecker->start();
    buildMenus();

    SettingsFile::setFailureHandler([this](const QString &reason) {
        m_statusBar->showSystemNotify(QStringLiteral("设置无法保存，仅本次运行有效：%1").arg(reason),
                                      Notice::Error);
    });

    // The window decides when the program ends; a dialog or tip that happens
    // to be the last one visible does not.
    QApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::setFallbackSessionManagementEnabled(false);
    connect(qApp, &QGuiApplication::commitDataRequest, this, &MainWindow::commitData, Qt::DirectConnection);
    connect(qApp, &QCoreApplication::aboutToQuit, &m_quitGuard, &QuitGuard::end);
    connect(&m_quitGuard, &QuitGuard::waiting, this, &MainWindow::setWaiting);
}

MainWindow::~MainWindow()
{
    SettingsFile::setFailureHandler({});
    while (!m_pages.isEmpty())
        delete m_pages.takeLast();
}

void MainWindow::restorePlace()
{
    m_memory.restore();
    m_tabBar->setCurrentIndex(Settings::instance().window.tool);
}

void MainWindow::launch(const LaunchOptions &options)
{
    if (options.tool >= 0) {
        m_tabBar->setCurrentIndex(options.tool);
        m_stack->setCurrentIndex(options.tool);
    }
    if (options.tool == SerialportWidget::pageIndex) {
        m_portChecker->SltCheckSerialport(); // a first list would close the port
        m_serial->launch(options);
    } else if (options.tool == NetworkToolWidget::pageIndex)
        m_network->launch(options);
    if (!options.file.isEmpty())
        m_hexEdit->openFile(options.file);
}

bool MainWindow::prepareToQuit()
{
    return m_quitGuard.mayQuit();
}

void MainWindow::closeApp()
{
    if (prepareToQuit())
        QCoreApplication::quit();
}

void MainWindow::sltTabBarClicked(int index, QString)
{
    Settings::instance().window.tool.change(index);
    m_stack->setCurrentIndex(index);
    m_statusBar->showPage(m_stack->currentWidget());
    SltRefreshCounts(index);
}

void MainWindow::SltRefreshCounts(int pageIndex)
{
    if (pageIndex == m_stack->currentIndex())
        m_statusBar->showCounts(currentPage()->counts());
}

void MainWindow::SltClearCounts()
{
    currentPage()->clearCounts();
}

// An unknown text, "中文" and "English" included, does nothing.
void MainWindow::SltActionTrigger(QAction *action)
{
    Settings &settings = Settings::instance();
    const QString text = action->text();
    if (text == kRecvColors) {
        openFromMenu([this] { chooseColors(QtStyleDialog::ReceiveArea); });
    } else if (text == kSendColors) {
        openFromMenu([this] { chooseColors(QtStyleDialog::SendArea); });
    } else if (const int codec = kCodecs.indexOf(text); codec >= 0) {
        chooseCodec(codec);
    } else if (const int skin = kSkins.indexOf(text); skin >= 0) {
        Skin::apply(skin);
    } else if (const int behaviour = kCloseBehaviours.indexOf(text); behaviour >= 0) {
        settings.closeBehaviour.set(behaviour);
    } else if (text == kRestore) {
        openFromMenu([this] { restoreDefaults(); });
    } else if (text == kExit) {
        openFromMenu([this] { closeApp(); });
    }
}

void MainWindow::SltAboutMenuTrigger(QAction *action)
{
    if (action->text() == kAbout)
        openFromMenu([this] { showAbout(); });
    else if (action->text() == kCheckUpdate)
        openFromMenu([this] { checkForUpdate(); });
    else if (action->text() == kAboutMaker)
        openUrl(QUrl(kMakerSite));
}

// A menu's button stays pressed until the menu has returned to it; a dialog
// that was opened before would keep it so.
void MainWindow::openFromMenu(const std::function<void()> &open)
{
    const bool isOpen = std::any_of(m_menuButtons.cbegin(), m_menuButtons.cend(),
                                    [](const QPushButton *button) { return button->isDown(); });
    if (isOpen)
        QTimer::singleShot(1, this, [this, open] { openFromMenu(open); });
    else
        open();
}

void MainWindow::checkForUpdate()
{
    QtUpdateDialog dialog(this);
    dialog.setQuitQuestion([this] { return prepareToQuit(); });
    connect(&dialog, &QtUpdateDialog::stayedOpen, this, [this] { m_quitGuard.stay(); });
    dialog.exec();
}

void MainWindow::showAbout()
{
    QtMessageBox::information(this, QStringLiteral("关于"),
                              QStringLiteral("%1\n版本：%2\nQt：%3\n程序目录：%4")
                                  .arg(windowTitle(), QCoreApplication::applicationVersion(),
                                       QString::fromLatin1(qVersion()),
                                       QDir::toNativeSeparators(AppPaths::root())));
}

void MainWindow::openUrl(const QUrl &url)
{
    if (!QDesktopServices::openUrl(url))
        m_statusBar->showSystemNotify(QStringLiteral("系统中没有可打开[%1]的程序！")
                                          .arg(url.isLocalFile() ? url.toLocalFile() : url.toString()),
                                      Notice::Error);
}

void MainWindow::SltBtnHelpClicked()
{
    // The manual where it is installed, a web address otherwise.
    const QString manual = AppPaths::manual();
    openUrl(QFileInfo(manual).isFile() ? QUrl::fromLocalFile(manual) : QUrl(kHelpPage));
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    event->ignore();
    closeApp();
}

void MainWindow::buildUi()
{
    m_titleBar = new QtTitleBar(QtTitleBar::MainWindowButtons, this);
    m_titleBar->setTitle(windowTitle());
    m_titleBar->setIcon(windowIcon());
    attachTitleBar(m_titleBar);
    connect(m_titleBar, &QtTitleBar::signalCloseWindow, this, &MainWindow::closeApp);

    m_tabBar = new QtTabBar(this);
    m_tabBar->addTool(QStringLiteral("串口调试助手"), IconFont::SerialPort);
    m_tabBar->addTool(QStringLiteral("摄像头调试助手"), IconFont::Camera);
    m_tabBar->addTool(QStringLiteral("网络调试助手"), IconFont::Network);
    m_tabBar->addTool(QStringLiteral("PID调试助手"), IconFont::Tune);
    m_tabBar->addTool(QStringLiteral("二进制文件编辑器"), IconFont::BinaryFile);

    m_stack = new QStackedWidget(this);
    m_stack->setObjectName(QStringLiteral("pageStack"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->setSpacing(0);
    layout->addWidget(m_titleBar);
    layout->addWidget(m_tabBar);
    layout->addWidget(m_stack, 1);

    m_serial = new SerialportWidget(this);
    m_camera = new CameraDebugWidget(this);
    m_network = new NetworkToolWidget(this);
    m_pid = new PidDebugWidget(this);
    m_hexEdit = new HexEditWidget(this);
    m_pages = {m_serial, m_camera, m_network, m_pid, m_hexEdit};
    for (QtWidgetBase *page : qAsConst(m_pages))
        m_stack->addWidget(page);
    m_quitGuard.setPages(m_pages);
    FieldBehavior::nameIconButtons(m_stack);

    m_statusBar = new QtStatusBar(this);
    m_statusBar->setCodecs(kCodecs);
    m_statusBar->showCodec(Settings::instance().textCodec);
    layout->addWidget(m_statusBar);
    m_portChecker = new QSerialPorCheck(this);
}

void MainWindow::connectPages()
{
    connect(m_tabBar, &QtTabBar::clicked, this, &MainWindow::sltTabBarClicked);
    connect(m_statusBar, &QtStatusBar::clearCount, this, &MainWindow::SltClearCounts);
    connect(m_statusBar, &QtStatusBar::codecChosen, this, &MainWindow::chooseCodec);
    for (QtWidgetBase *page : qAsConst(m_pages)) {
        connect(page, &QtWidgetBase::signalNotify, m_statusBar, &QtStatusBar::showSystemNotify);
        connect(page, &QtWidgetBase::signalLogState, this, [this, page](const QString &text, bool isFailing) {
            m_statusBar->showLog(page, text, isFailing);
        });
        connect(page, &QtWidgetBase::signalAnswerState, this,
                [this, page](const QString &text, bool isFailing) {
                    m_statusBar->showAnswers(page, text, isFailing);
                });
        connect(page, &QtWidgetBase::signalCodecWanted, this, &MainWindow::chooseCodec);
        connect(page, &QtWidgetBase::signalRefresCounts, this, &MainWindow::SltRefreshCounts);
    }
    connect(m_portChecker, &QSerialPorCheck::signalSerialChanged, m_serial,
            &SerialportWidget::SltSerialportChanged);
    connect(m_portChecker, &QSerialPorCheck::signalSerialChanged, m_camera,
            &CameraDebugWidget::SltSerialportChanged);
    connect(m_portChecker, &QSerialPorCheck::signalSerialChanged, m_pid,
            &PidDebugWidget::SltSerialportChanged);
    SltRefreshCounts(m_stack->currentIndex());
}

void MainWindow::buildMenus()
{
    QMenu *settingsMenu = buildSettingsMenu();
    QMenu *helpMenu = buildHelpMenu();

    auto *settingsButton = new QPushButton(QStringLiteral("设置"), m_titleBar);
    settingsButton->setObjectName(QStringLiteral("btnSettings"));
    settingsButton->setMenu(settingsMenu);
    auto *helpButton = new QPushButton(QStringLiteral("帮助"), m_titleBar);
    helpButton->setObjectName(QStringLiteral("btnHelpMenu"));
    helpButton->setMenu(helpMenu);
    auto *helpPageButton = new QPushButton(m_titleBar);
    helpPageButton->setObjectName(QStringLiteral("btnHelp"));
    helpPageButton->setIcon(IconFont::icon(IconFont::Help, QColor(0xff, 0xff, 0xff), 12, 16));
    helpPageButton->setToolTip(QStringLiteral("打开使用手册（F1）"));
    helpPageButton->setAccessibleName(QStringLiteral("打开使用手册"));
    m_menuButtons = {settingsButton, helpButton};
    settingsButton->setToolTip(QStringLiteral("F10、Alt+S"));
    helpButton->setToolTip(QStringLiteral("Alt+H"));
    const auto openWith = [this](int key, QPushButton *button) {
        connect(new QShortcut(QKeySequence(key), this), &QShortcut::activated, button,
                &QPushButton::showMenu);
    };
    openWith(Qt::Key_F10, settingsButton);
    openWith(int(Qt::ALT) + Qt::Key_S, settingsButton);
    openWith(int(Qt::ALT) + Qt::Key_H, helpButton);
    auto *openHelp = new QShortcut(QKeySequence(Qt::Key_F1), this);
    connect(openHelp, &QShortcut::activated, this, &MainWindow::SltBtnHelpClicked);
    for (QPushButton *button : {settingsButton, helpButton, helpPageButton})
        m_titleBar->addMenuWidget(button);
    // While a menu is open its button sees no mouse leave it.
    for (QPushButton *button : {settingsButton, helpButton})
        connect(button->menu(), &QMenu::aboutToHide, button, [button] {
            button->setAttribute(Qt::WA_UnderMouse,
                                 button->rect().contains(button->mapFromGlobal(QCursor::pos())));
        });

    connect(settingsMenu, &QMenu::triggered, this, &MainWindow::SltActionTrigger);
    connect(settingsMenu, &QMenu::aboutToShow, this, &MainWindow::showChecks);
    connect(helpMenu, &QMenu::triggered, this, &MainWindow::SltAboutMenuTrigger);
    connect(helpPageButton, &QPushButton::clicked, this, &MainWindow::SltBtnHelpClicked);
}

QMenu *MainWindow::buildSettingsMenu()
{
    auto *menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("settingsMenu"));
    menu->addAction(kRecvColors);
    menu->addAction(kSendColors);
    m_codecs = addChoices(menu, QStringLiteral("编码设置"), kCodecs);
    m_skins = addChoices(menu, QStringLiteral("主题"), kSkins);
    m_closeBehaviours = addChoices(menu, QStringLiteral("数据缓存"), kCloseBehaviours);
    menu->addAction(kRestore);
    menu->addAction(kExit);
    showChecks();
    return menu;
}

QMenu *MainWindow::buildHelpMenu()
{
    auto *menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("helpMenu"));
    menu->addAction(kAbout);
    menu->addAction(kCheckUpdate);
    menu->addAction(kAboutMaker);
    return menu;
}

QActionGroup *MainWindow::addChoices(QMenu *menu, const QString &title, const QStringList &choices)
{
    QMenu *submenu = menu->addMenu(title);
    auto *group = new QActionGroup(submenu);
    for (const QString &choice : choices) {
        QAction *action = submenu->addAction(choice);
        action->setCheckable(true);
        group->addAction(action);
    }
    return group;
}

void MainWindow::showChecks()
{
    const Settings &settings = Settings::instance();
    check(m_codecs, settings.textCodec);
    check(m_skins, settings.skin);
    check(m_closeBehaviours, settings.closeBehaviour);
}

void MainWindow::chooseColors(QtStyleDialog::Area area)
{
    QtStyleDialog dialog(area, this);
    if (dialog.exec() == 1)
        Skin::apply(Settings::instance().skin);
}

void MainWindow::chooseCodec(int codec)
{
    Settings::instance().textCodec.set(codec);
    showCodec();
}

void MainWindow::showCodec()
{
    m_statusBar->showCodec(Settings::instance().textCodec);
    for (QtWidgetBase *page : qAsConst(m_pages))
        page->reloadCodec();
}

void MainWindow::restoreDefaults()
{
    if (QtMessageBox::question(this, QStringLiteral("询问"), QStringLiteral("确认恢复默认设置吗?")) != 1)
        return;
    const bool written = Settings::restoreDefaults();
    Skin::apply(Settings::instance().skin);
    for (QtWidgetBase *page : qAsConst(m_pages))
        page->reloadSettings();
    showCodec();
    QtMessageTip::showTip(written ? QStringLiteral("配置已恢复！")
                                  : QStringLiteral("配置文件无法写入，仅本次运行恢复默认设置！"),
                          2000);
}

// The session ends: the question must be answered now or not at all.
void MainWindow::commitData(QSessionManager &manager)
{
    if (!manager.allowsInteraction())
        return;
    if (!m_quitGuard.mayEndSession())
        manager.cancel();
    manager.release();
}

void MainWindow::setWaiting(bool waits)
{
    m_stack->setEnabled(!waits);
    if (waits)
        m_statusBar->showSystemNotify(QStringLiteral("正在关闭连接，完成后退出；再次关闭窗口可立即退出"),
                                      Notice::Information);
}

QtWidgetBase *MainWindow::currentPage() const
{
    return m_pages.at(m_stack->currentIndex());
}
