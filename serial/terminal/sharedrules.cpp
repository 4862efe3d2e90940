#include "sharedrules.h"

#include "settings.h"

SharedRules &SharedRules::instance()
{
    static SharedRules rules;
    return rules;
}

void SharedRules::load()
{
    const Settings &settings = Settings::instance();
    if (settings.colorRules == m_stored && settings.view.usesColorRules == m_areUsed)
        return;
    m_stored = settings.colorRules;
    m_areUsed = settings.view.usesColorRules;
    QString reason;
    m_rules = ColorRuleFile::read(m_stored.toUtf8(), &reason).value_or(ColorRules());
    m_coloring.setRules(m_areUsed ? m_rules : ColorRules());
    emit changed();
}

bool SharedRules::store(const ColorRules &rules, bool areUsed)
{
    Settings &settings = Settings::instance();
    bool isWritten = true;
    if (!(rules == m_rules))
        isWritten = settings.colorRules.set(QString::fromUtf8(ColorRuleFile::write(rules)));
    if (areUsed != m_areUsed)
        isWritten = settings.view.usesColorRules.set(areUsed) && isWritten;
    load();
    return isWritten;
}
