#include "appversion.h"
#include "consoletext.h"
#include "demoboards.h"
#include "launchoptions.h"
#include "leftoveroffer.h"
#include "mainwindow.h"
#include "profile.h"
#include "qtmessagebox.h"
#include "qtstatusbar.h"
#include "startup.h"

#include <QApplication>
#include <QScreen>
#include <QTimer>
#include <memory>

namespace {

constexpr int kUsageFault = 2; // exit status

// What is answered without a window, a folder or a display.
bool isAnswered(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    switch (LaunchOptions::parse(arguments).action) {
    case LaunchOptions::Action::ShowHelp:
        ConsoleText::print(LaunchOptions::help(), false);
        return true;
    case LaunchOptions::Action::ShowVersion:
        ConsoleText::print(QStringLiteral("Korvex %1\n").arg(QLatin1String(AppVersion::text)), false);
        return true;
    case LaunchOptions::Action::Run:
        break;
    }
    return false;
}

QString faultOf(const LaunchOptions &options)
{
    if (!options.fault.isEmpty() || options.profile.isEmpty() ||
        ProfileStore(LaunchOptions::nameOf(options.tool)).contains(options.profile))
        return options.fault;
    return QStringLiteral("没有这个方案：%1").arg(options.profile);
}

} // namespace

int main(int argc, char *argv[])
{
    if (isAnswered(argc, argv))
        return 0;
    Startup::setAttributes();
    QApplication application(argc, argv); // takes its own options away
    const LaunchOptions options = LaunchOptions::parse(QCoreApplication::arguments().mid(1));
    const QString fault = faultOf(options);
    if (!fault.isEmpty()) {
        ConsoleText::print(QStringLiteral("%1\n用 --help 查看帮助\n").arg(fault), true);
        return kUsageFault;
    }
    Startup::prepare(application);
    const std::unique_ptr<DemoBoards> boards(options.isDemo ? new DemoBoards : nullptr);

    MainWindow window;
    window.resize(QSize(1000, 550).boundedTo(window.screen()->availableSize()));
    window.restorePlace();
    window.show();
    window.launch(options);
    auto *statusBar = window.findChild<QtStatusBar *>();
    if (!options.notice.isEmpty()) {
        statusBar->showSystemNotify(options.notice, Notice::Error);
        // In the status bar alone it is overlooked. Not before the window has its place.
        QTimer::singleShot(200, &window, [&window, text = options.notice] {
            QtMessageBox::warning(&window, QStringLiteral("升级"), text);
        });
    }
    if (boards) {
        QObject::connect(boards.get(), &DemoBoards::failed, statusBar, [statusBar](const QString &text) {
            statusBar->showSystemNotify(text, Notice::Error);
        });
        boards->start();
    }
    // Once the window is there, and with its ports open.
    QTimer::singleShot(0, &window, [&window] { LeftoverOffer::make(&window); });
    Startup::removeUpdateRemains();
    return QApplication::exec();
}
