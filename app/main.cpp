#include "demoboards.h"
#include "mainwindow.h"
#include "qtmessagebox.h"
#include "qtstatusbar.h"
#include "startup.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QScreen>
#include <QTimer>
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
    const QCommandLineOption notice(QStringLiteral("notice"), QStringLiteral("启动后显示的错误提示"),
                                    QStringLiteral("text")); // the unpacker's, where an update failed
    parser.addOption(demo);
    parser.addOption(notice);
    parser.process(application);
    const std::unique_ptr<DemoBoards> boards(parser.isSet(demo) ? new DemoBoards : nullptr);

    MainWindow window;
    window.resize(QSize(1000, 550).boundedTo(window.screen()->availableSize()));
    window.restorePlace();
    window.show();
    auto *statusBar = window.findChild<QtStatusBar *>();
    if (parser.isSet(notice)) {
        statusBar->showSystemNotify(parser.value(notice), Notice::Error);
        // In the status bar alone it is overlooked. Not before the window has its place.
        QTimer::singleShot(200, &window, [&window, text = parser.value(notice)] {
            QtMessageBox::warning(&window, QStringLiteral("升级"), text);
        });
    }
    if (boards) {
        QObject::connect(boards.get(), &DemoBoards::failed, statusBar, [statusBar](const QString &text) {
            statusBar->showSystemNotify(text, Notice::Error);
        });
        boards->start();
    }
    Startup::removeUpdateRemains();
    return QApplication::exec();
}
