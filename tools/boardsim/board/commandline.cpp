#include "commandline.h"

#include <cstdio>
#include <cstdlib>

namespace Boardsim {

CommandLine::CommandLine(const QStringList &arguments, const QString &description)
    : m_arguments(arguments)
{
    m_parser.setApplicationDescription(description);
    m_parser.addHelpOption();
}

void CommandLine::addText(const char *name, const char *valueName, const QString &help, QString *value)
{
    add(name, valueName, help, [value](const QString &text) { *value = text; });
}

void CommandLine::addFlag(const char *name, const QString &help, bool *value)
{
    add(name, "", help, [value](const QString &) { *value = true; });
}

void CommandLine::addTexts(const char *name, const char *valueName, const QString &help,
                           const std::function<bool(const QString &text)> &take)
{
    add(name, valueName, help, [=](const QString &text) {
        if (!take(text))
            reject(QStringLiteral("--%1 does not take '%2'").arg(QLatin1String(name), text));
    });
}

void CommandLine::add(const char *name, const char *valueName, const QString &help,
                      const std::function<void(const QString &text)> &take)
{
    m_parser.addOption({QLatin1String(name), help, QLatin1String(valueName)});
    m_takers.append({QLatin1String(name), take});
}

void CommandLine::process()
{
    m_parser.process(m_arguments);
    if (!m_parser.positionalArguments().isEmpty())
        reject(QStringLiteral("unexpected argument '%1'").arg(m_parser.positionalArguments().constFirst()));
    for (const auto &[name, take] : qAsConst(m_takers)) {
        const QStringList texts = m_parser.values(name);
        for (const QString &text : texts)
            take(text);
        if (texts.isEmpty() && m_parser.isSet(name)) // a flag
            take({});
    }
    for (const auto &check : qAsConst(m_checks))
        check();
}

qint64 CommandLine::number(const char *name, const QString &text, qint64 min, qint64 max)
{
    bool isNumber = false;
    const qint64 value = text.toLongLong(&isNumber);
    if (!isNumber || value < min || value > max)
        reject(
            QStringLiteral("--%1 takes a number from %2 to %3").arg(QLatin1String(name)).arg(min).arg(max));
    return value;
}

void CommandLine::reject(const QString &message)
{
    std::fprintf(stderr, "boardsim: %s\n", qPrintable(message));
    std::exit(2);
}

} // namespace Boardsim
