#include "app/startup.h"
#include "shell/window/mainwindow.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    Startup::setAttributes();
    QApplication application(argc, argv);
    Startup::prepare(application);

    MainWindow window;
    window.resize(1000, 550);
    window.show();
    return QApplication::exec();
}
