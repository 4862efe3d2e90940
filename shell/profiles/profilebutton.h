#pragma once

// "方案": the set-up of a page under a name. Saves it, chooses one from the list, hands
// it on as a file. Knows settings, not what they mean.

#include "notice.h"
#include "profile.h"

#include <QPushButton>

#include <functional>

class QMenu;

class ProfileButton : public QPushButton
{
    Q_OBJECT

public:
    struct Groups // of the settings
    {
        QStringList remembered; // what the page's fields are bound to
        QStringList opened;     // of the link that was opened last, which a profile does not change
    };

    // page: as files name it.
    ProfileButton(const QString &page, const Groups &groups, QWidget *parent = nullptr);

    // Says why no profile can be chosen now; empty where one can.
    void setRefusal(const std::function<QString()> &refusal) { m_refusal = refusal; }
    // Chooses one; false with a reason for the user.
    bool choose(const QString &name, QString *reason);

signals:
    // The settings are to be what the fields show.
    void collecting();
    // The fields are to show what the settings are.
    void chosen();
    void notify(const Notice &notice);

private:
    void fillMenu();
    void saveAs();
    void import();
    void exportTo(const QString &name);
    void remove(const QString &name);
    bool mayReplace(const QString &name);
    bool store(const Profile &profile);
    bool apply(const Profile &profile, QString *reason);
    void chooseFromMenu(const QString &name);

    QString m_page;
    Groups m_groups;
    ProfileStore m_store;
    std::function<QString()> m_refusal;
    QString m_current; // chosen or saved last
};
