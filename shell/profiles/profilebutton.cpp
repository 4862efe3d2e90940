#include "profilebutton.h"

#include "namedialog.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "settings.h"

#include <QFileInfo>
#include <QMenu>

namespace {

const auto kFilter = QStringLiteral("方案文件(*.ini)");

// A name may hold "&", which a menu takes for a mnemonic.
QString menuText(QString name)
{
    return name.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

} // namespace

ProfileButton::ProfileButton(const QString &page, const Groups &groups, QWidget *parent)
    : QPushButton(QStringLiteral("方案"), parent)
    , m_page(page)
    , m_groups(groups)
    , m_store(page)
{
    setObjectName(QStringLiteral("btnProfiles"));
    setToolTip(QStringLiteral("把本页的配置存为方案，以后从列表选用"));
    auto *menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("profileMenu"));
    setMenu(menu);
    connect(menu, &QMenu::aboutToShow, this, &ProfileButton::fillMenu);
}

void ProfileButton::fillMenu()
{
    menu()->clear();
    qDeleteAll(menu()->findChildren<QMenu *>(QString(), Qt::FindDirectChildrenOnly));
    const QStringList names = m_store.names();
    for (const QString &name : names) {
        QAction *action = menu()->addAction(menuText(name), this, [this, name] { chooseFromMenu(name); });
        action->setCheckable(true);
        action->setChecked(name == m_current);
    }
    if (!names.isEmpty())
        menu()->addSeparator();
    menu()->addAction(QStringLiteral("保存为方案…"), this, &ProfileButton::saveAs);
    menu()->addAction(QStringLiteral("导入…"), this, &ProfileButton::import);
    QMenu *exports = menu()->addMenu(QStringLiteral("导出"));
    QMenu *removals = menu()->addMenu(QStringLiteral("删除"));
    for (const QString &name : names) {
        exports->addAction(menuText(name), this, [this, name] { exportTo(name); });
        removals->addAction(menuText(name), this, [this, name] { remove(name); });
    }
    exports->setEnabled(!names.isEmpty());
    removals->setEnabled(!names.isEmpty());
}

// ---- choosing

void ProfileButton::chooseFromMenu(const QString &name)
{
    QString reason;
    if (!choose(name, &reason))
        emit notify(Notice::error(QStringLiteral("方案[%1]未选用：%2").arg(name, reason)));
}

bool ProfileButton::choose(const QString &name, QString *reason)
{
    Profile profile;
    return m_store.read(name, &profile, reason) && apply(profile, reason);
}

bool ProfileButton::apply(const Profile &profile, QString *reason)
{
    *reason = m_refusal ? m_refusal() : QString();
    if (!reason->isEmpty())
        return false;
    const QStringList refused = Settings::setValues(profile.values, m_groups.remembered, true) +
                                Settings::setValues(profile.values, m_groups.opened, false);
    m_current = profile.name;
    emit notify(Notice::information(QStringLiteral("已选用方案[%1]").arg(profile.name)));
    if (!refused.isEmpty())
        emit notify(Notice::error(QStringLiteral("方案[%1]中有%2个值无效，保持原样：%3")
                                      .arg(profile.name)
                                      .arg(refused.size())
                                      .arg(refused.mid(0, 3).join(QStringLiteral("、")))));
    emit chosen();
    return true;
}

// ---- saving

void ProfileButton::saveAs()
{
    const QString name = NameDialog::ask(this, QStringLiteral("保存为方案"), QStringLiteral("方案名称"),
                                         m_current, ProfileStore::maxNameLength);
    if (name.isEmpty() || !mayReplace(name))
        return;
    emit collecting();
    const Profile profile{name, m_page, Settings::values(m_groups.remembered + m_groups.opened)};
    if (store(profile))
        emit notify(Notice::information(QStringLiteral("方案[%1]已保存").arg(profile.name)));
}

bool ProfileButton::mayReplace(const QString &name)
{
    return !m_store.contains(name) ||
           QtMessageBox::question(this, QStringLiteral("询问"),
                                  QStringLiteral("方案“%1”已存在，是否覆盖？").arg(name)) == 1;
}

bool ProfileButton::store(const Profile &profile)
{
    QString reason;
    if (m_store.save(profile, &reason)) {
        m_current = profile.name;
        return true;
    }
    emit notify(Notice::error(QStringLiteral("方案[%1]无法保存：%2").arg(profile.name, reason)));
    return false;
}

void ProfileButton::remove(const QString &name)
{
    if (QtMessageBox::question(this, QStringLiteral("询问"),
                               QStringLiteral("是否删除方案“%1”？").arg(name)) != 1)
        return;
    if (!m_store.remove(name))
        emit notify(Notice::error(QStringLiteral("方案[%1]无法删除").arg(name)));
}

// ---- files

void ProfileButton::import()
{
    const QString fileName =
        QtFileDialog::getOpenFileName(this, QStringLiteral("导入方案"), QString(), kFilter);
    if (fileName.isEmpty())
        return;
    Profile profile;
    QString reason;
    const bool isRead = profile.readFrom(fileName, &reason);
    if (isRead && profile.page != m_page)
        reason = QStringLiteral("方案属于其他页面");
    if (!isRead || profile.page != m_page) {
        emit notify(
            Notice::error(QStringLiteral("无法导入“%1”：%2").arg(QFileInfo(fileName).fileName(), reason)));
        return;
    }
    if (!mayReplace(profile.name) || !store(profile))
        return;
    if (!apply(profile, &reason))
        emit notify(
            Notice::information(QStringLiteral("方案[%1]已导入，未选用：%2").arg(profile.name, reason)));
}

void ProfileButton::exportTo(const QString &name)
{
    const QString fileName =
        QtFileDialog::getSaveFileName(this, QStringLiteral("导出方案"), QString(), kFilter);
    if (fileName.isEmpty())
        return;
    Profile profile;
    QString reason;
    if (m_store.read(name, &profile, &reason) && profile.writeTo(fileName, &reason))
        emit notify(Notice::information(QStringLiteral("方案[%1]已导出").arg(name)));
    else
        emit notify(Notice::error(QStringLiteral("方案[%1]无法导出：%2").arg(name, reason)));
}
