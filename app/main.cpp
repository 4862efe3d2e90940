#include "app/demoboards.h"
#include "app/startup.h"
#include "shell/window/mainwindow.h"
#include "shell/window/qtstatusbar.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QScreen>
#include <memory>

int main(int argc, char *argv[])
{
    Startup::setAttributes();
    QApplication application(argc, argv);
    Startup::prepare(application);

    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption demo(QStringLiteral("demo"),
                                  QStringLiteral("使用模拟开发板（COM3至COM8和网络）"));
    parser.addOption(demo);
    parser.process(application);
    const std::unique_ptr<DemoBoards> boards(parser.isSet(demo) ? new DemoBoards : nullptr);

    MainWindow window;
    window.resize(QSize(1000, 550).boundedTo(window.screen()->availableSize()));
    window.show();
    if (boards) {
        auto *statusBar = window.findChild<QtStatusBar *>();
        QObject::connect(boards.get(), &DemoBoards::failed, statusBar, [statusBar](const QString &text) {
            statusBar->showSystemNotify(text, Notice::Error);
        });
        boards->start();
    }
    return QApplication::exec();
}
