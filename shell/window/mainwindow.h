#pragma once

// The program's window: title bar with the menus, tab bar, the five tools and
// the status bar. Routes the pages' notices and counts, hands the
// list of serial ports to the pages that use it, and ends the program.

#include "qtmainwindow.h"
#include "qtstyledialog.h"
#include "quitguard.h"
#include "windowmemory.h"

#include <QVector>
#include <functional>

class QAction;
class QActionGroup;
class QMenu;
class QPushButton;
class QSessionManager;
class QStackedWidget;
class QUrl;
class QSerialPorCheck;
class QtStatusBar;
class QtTabBar;
class QtTitleBar;
class QtWidgetBase;
class CameraDebugWidget;
class HexEditWidget;
class NetworkToolWidget;
class PidDebugWidget;
class SerialportWidget;
struct LaunchOptions;

class MainWindow : public QtMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    // As it was at the end of the last run. Before it is shown.
    void restorePlace();

    // Does what the command line asks for, once, when the window is shown.
    void launch(const LaunchOptions &options);

    // Asks every page, closes the links and saves, once for all ways to quit.
    // False keeps the program open.
    bool prepareToQuit();

public slots:
    void closeApp();
    void sltTabBarClicked(int index, QString text);
    void SltRefreshCounts(int pageIndex);
    void SltClearCounts();
    void SltActionTrigger(QAction *action);
    void SltAboutMenuTrigger(QAction *action);
    void SltBtnHelpClicked();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void buildUi();
    void connectPages();
    void buildMenus();
    QMenu *buildSettingsMenu();
    QMenu *buildHelpMenu();
    QActionGroup *addChoices(QMenu *menu, const QString &title, const QStringList &choices);
    void showChecks();
    void openFromMenu(const std::function<void()> &open);
    void chooseColors(QtStyleDialog::Area area);
    void chooseCodec(int codec);
    void showCodec();
    void restoreDefaults();
    void checkForUpdate();
    void showAbout();
    void openUrl(const QUrl &url);
    void commitData(QSessionManager &manager);
    void setWaiting(bool waits); // pages are disabled while links close
    QtWidgetBase *currentPage() const;

    QtTitleBar *m_titleBar;
    QtTabBar *m_tabBar;
    QStackedWidget *m_stack;
    SerialportWidget *m_serial;
    CameraDebugWidget *m_camera;
    NetworkToolWidget *m_network;
    PidDebugWidget *m_pid;
    HexEditWidget *m_hexEdit;
    QVector<QtWidgetBase *> m_pages; // in order of creation
    QtStatusBar *m_statusBar;
    QSerialPorCheck *m_portChecker;
    QVector<QPushButton *> m_menuButtons;
    QActionGroup *m_codecs = nullptr;
    QActionGroup *m_skins = nullptr;
    QActionGroup *m_closeBehaviours = nullptr;
    QuitGuard m_quitGuard;
    WindowMemory m_memory;
};
