#include "settings.h"

#include "apppaths.h"

#include <QSettings>

// Before the file is read, two values differ from the reading defaults.
Settings::ProbeSettings::ProbeSettings(SettingsTable *table, const char *group)
    : SettingsGroup(table, group, KeepsUnwritten)
{
    port.setForThisRun(QStringLiteral("SW"));
    frequency.setForThisRun(QStringLiteral("10MHz"));
}

Settings &Settings::operator=(const Settings &other)
{
    for (int i = 0; i < m_table.size(); ++i)
        m_table[i]->assign(*other.m_table[i]);
    return *this;
}

Settings &Settings::instance()
{
    static Settings settings;
    return settings;
}

namespace {

bool isWrittenAtFirstStart(const SettingBase &setting)
{
    return setting.firstStartValue().isValid();
}

} // namespace

void Settings::writeDefaults()
{
    QSettings file(AppPaths::configFile(), QSettings::IniFormat);
    if (!file.childGroups().join(QString()).isEmpty())
        return;
    for (const SettingBase *setting : qAsConst(instance().m_table))
        if (isWrittenAtFirstStart(*setting))
            file.setValue(setting->path(), setting->firstStartValue());
}

void Settings::load()
{
    const QSettings file(AppPaths::configFile(), QSettings::IniFormat);
    for (SettingBase *setting : qAsConst(instance().m_table))
        setting->read(file.value(setting->path()));
}

QMap<QString, QVariant> Settings::values(const QStringList &groups)
{
    QMap<QString, QVariant> values;
    for (const SettingBase *setting : qAsConst(instance().m_table))
        if (groups.contains(setting->path().section(QLatin1Char('/'), 0, 0)))
            values.insert(setting->path(), setting->stored());
    return values;
}

QStringList Settings::setValues(const QMap<QString, QVariant> &values, const QStringList &groups, bool writes)
{
    QStringList refused;
    for (SettingBase *setting : qAsConst(instance().m_table)) {
        const QString path = setting->path();
        if (!values.contains(path) || !groups.contains(path.section(QLatin1Char('/'), 0, 0)))
            continue;
        if (!setting->accept(values.value(path)))
            refused.append(path);
        else if (writes)
            setting->write();
    }
    return refused;
}

bool Settings::restoreDefaults()
{
    const SettingsTable &table = instance().m_table;
    const bool isWritten = SettingsFile::change([&table](QSettings &file) {
        for (const SettingBase *setting : table) {
            if (isWrittenAtFirstStart(*setting))
                file.setValue(setting->path(), setting->firstStartValue());
            else if (!setting->isKeptAtRestoring())
                file.remove(setting->path());
        }
    });
    if (isWritten) {
        load();
        return true;
    }
    for (SettingBase *setting : table)
        if (isWrittenAtFirstStart(*setting) || !setting->isKeptAtRestoring())
            setting->read(setting->firstStartValue());
    return false;
}
