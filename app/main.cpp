#include "app/startup.h"
#include "shell/window/mainwindow.h"

#include <QApplication>
#include <QScreen>

int main(int argc, char *argv[])
{
    Startup::setAttributes();
    QApplication application(argc, argv);
    Startup::prepare(application);

    MainWindow window;
    window.resize(QSize(1000, 550).boundedTo(window.screen()->availableSize()));
    window.show();
    return QApplication::exec();
}
