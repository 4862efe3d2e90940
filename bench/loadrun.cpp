#include "loadrun.h"

#include "apppaths.h"
#include "startup.h"

#include <QTabBar>
#include <QTcpServer>

LoadRun::Attributes::Attributes()
{
    Startup::setAttributes();
}

LoadRun::LoadRun(int &argc, char **argv, std::initializer_list<const char *> values,
                 std::initializer_list<const char *> flags)
    : m_application(argc, argv)
{
    for (const char *name : values)
        m_parser.addOption({QLatin1String(name), QString(), QStringLiteral("value")});
    for (const char *name : flags)
        m_parser.addOption(QCommandLineOption(QLatin1String(name)));
    m_parser.process(m_application);
    AppPaths::setRoot(m_root.path());
    Startup::prepare(m_application);
    m_window.emplace();
    m_window->resize(1000, 550);
    m_window->show();
}

void LoadRun::showPage(int index)
{
    m_window->findChild<QTabBar *>(QStringLiteral("toolTabs"))->setCurrentIndex(index);
    m_window->sltTabBarClicked(index, QString());
}

void LoadRun::savePicture()
{
    if (isSet("picture"))
        m_window->grab().save(text("picture"));
}

quint16 LoadRun::freePort()
{
    QTcpServer probe;
    probe.listen();
    return probe.serverPort();
}
