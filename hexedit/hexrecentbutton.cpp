#include "hexrecentbutton.h"

#include "settings.h"

#include <QDir>
#include <QFileInfo>
#include <QMenu>

namespace {

constexpr int kMaxRecent = 10;

} // namespace

HexRecentButton::HexRecentButton(QWidget *parent)
    : QPushButton(QStringLiteral("最近打开"), parent)
{
    setObjectName(QStringLiteral("btnRecent"));
    setMenu(new QMenu(this));
    menu()->setToolTipsVisible(true);
    connect(menu(), &QMenu::aboutToShow, this, &HexRecentButton::fillMenu);
}

void HexRecentButton::remember(const QString &fileName)
{
    QStringList names = Settings::instance().recentFiles;
    const QString name = QFileInfo(fileName).absoluteFilePath();
    names.removeAll(name);
    names.prepend(name);
    Settings::instance().recentFiles.set(names.mid(0, kMaxRecent));
}

bool HexRecentButton::forgetIfGone(const QString &fileName)
{
    QStringList names = Settings::instance().recentFiles;
    if (QFileInfo::exists(fileName) || names.removeAll(fileName) == 0)
        return false;
    Settings::instance().recentFiles.set(names);
    return true;
}

void HexRecentButton::fillMenu()
{
    menu()->clear();
    if (m_first) {
        // An action of its own: with its key in the menu as well, the key would be ambiguous.
        QAction *const first = menu()->addAction(m_first->text());
        connect(first, &QAction::triggered, m_first, &QAction::trigger);
        menu()->addSeparator();
    }
    const QStringList names = Settings::instance().recentFiles;
    for (const QString &name : names) {
        QAction *action =
            menu()->addAction(QFileInfo(name).fileName().replace(QLatin1Char('&'), QStringLiteral("&&")));
        action->setToolTip(QDir::toNativeSeparators(name));
        connect(action, &QAction::triggered, this, [this, name] { emit chosen(name); });
    }
    if (names.isEmpty())
        menu()->addAction(QStringLiteral("（没有最近打开的文件）"))->setEnabled(false);
}
