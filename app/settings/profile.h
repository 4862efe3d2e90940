#pragma once

// The set-up of a page under a name: values of the settings, by their paths. Each is
// a readable file of its own in conf/profiles, which can be handed on.

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

struct Profile
{
    QString name;
    QString page; // that it belongs to
    QMap<QString, QVariant> values;

    // The file anywhere. False with a reason for the user; a file that is no profile leaves
    // this as it was.
    bool readFrom(const QString &fileName, QString *reason);
    bool writeTo(const QString &fileName, QString *reason) const;
};

// Those of one page.
class ProfileStore
{
public:
    static constexpr int maxNameLength = 24; // characters, of which a file name holds so many

    explicit ProfileStore(const QString &page);

    // Sorted; read each time, since several copies of the program share them.
    QStringList names() const;
    bool contains(const QString &name) const;
    bool read(const QString &name, Profile *profile, QString *reason) const;
    // Replaces one of the same name.
    bool save(const Profile &profile, QString *reason) const;
    bool remove(const QString &name) const;

private:
    QString fileOf(const QString &name) const;

    QString m_page;
};
