#include "setting.h"

SettingsGroup::SettingsGroup(SettingsTable *table, const char *name, Restoring restoring)
    : m_table(table)
    , m_name(name)
    , m_restoring(restoring)
{
}

SettingBase::SettingBase(SettingsGroup *group, const char *key)
    : m_group(group->m_name)
    , m_key(key)
    , m_isKept(group->m_restoring == SettingsGroup::KeepsUnwritten)
{
    group->m_table->append(this);
}

QString SettingBase::path() const
{
    return m_group + QLatin1Char('/') + m_key;
}

bool SettingBase::write() const
{
    return SettingsFile::write(path(), stored());
}

namespace SettingFormat {

std::optional<int> parse(const QVariant &stored, const SettingRange &range, int)
{
    bool isNumber = false;
    const int value = stored.toInt(&isNumber);
    if (!isNumber || value < range.min || value > range.max)
        return {};
    return value;
}

std::optional<bool> parse(const QVariant &stored, const SettingRange &, bool)
{
    const std::optional<int> number = parse(stored, SettingRange{0, 1}, 0);
    return number ? std::optional<bool>(*number == 1) : std::nullopt;
}

std::optional<QColor> parse(const QVariant &stored, const SettingRange &, const QColor &)
{
    const QColor value(stored.toString());
    return value.isValid() ? std::optional<QColor>(value) : std::nullopt;
}

std::optional<QString> parse(const QVariant &stored, const SettingRange &, const QString &)
{
    return stored.isValid() ? std::optional<QString>(stored.toString()) : std::nullopt;
}

std::optional<QStringList> parse(const QVariant &stored, const SettingRange &, const QStringList &)
{
    return stored.toStringList();
}

QVariant format(int value)
{
    return value;
}

QVariant format(bool value)
{
    return value ? 1 : 0;
}

QVariant format(const QColor &value)
{
    return value.name();
}

QVariant format(const QString &value)
{
    return value;
}

QVariant format(const QStringList &value)
{
    return value;
}

} // namespace SettingFormat
