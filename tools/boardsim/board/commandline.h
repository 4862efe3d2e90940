#pragma once

// The command line of a board, to which each part of the board adds the options
// that it has. An option is described once: its name, its help and where its
// value goes. An option that is not given keeps its value.
//
// Ends the program with an English message where the command line is invalid,
// and after the help.

#include <QCommandLineParser>
#include <QStringList>

#include <functional>
#include <utility>

namespace Boardsim {

template <class Value> using Choices = QVector<std::pair<const char *, Value>>;

class CommandLine
{
public:
    CommandLine(const QStringList &arguments, const QString &description);

    void addText(const char *name, const char *valueName, const QString &help, QString *value);
    void addFlag(const char *name, const QString &help, bool *value);
    // May be given several times; the function gets each and returns false for
    // an invalid one.
    void addTexts(const char *name, const char *valueName, const QString &help,
                  const std::function<bool(const QString &text)> &take);
    template <class Number>
    void addNumber(const char *name, const char *valueName, const QString &help, Number *value, qint64 min,
                   qint64 max);
    // The help names the choices.
    template <class Value>
    void addChoice(const char *name, const QString &help, Value *value, const Choices<Value> &choices);

    // Called when all options are read, to reject what does not go together.
    void addCheck(const std::function<void()> &check) { m_checks.append(check); }

    // After all options have been added.
    void process();

    [[noreturn]] static void reject(const QString &message);

private:
    void add(const char *name, const char *valueName, const QString &help,
             const std::function<void(const QString &text)> &take);
    static qint64 number(const char *name, const QString &text, qint64 min, qint64 max);

    QStringList m_arguments;
    QCommandLineParser m_parser;
    QVector<std::pair<QString, std::function<void(const QString &text)>>> m_takers;
    QVector<std::function<void()>> m_checks;
};

template <class Number>
void CommandLine::addNumber(const char *name, const char *valueName, const QString &help, Number *value,
                            qint64 min, qint64 max)
{
    add(name, valueName, QStringLiteral("%1 (default: %2).").arg(help).arg(*value),
        [=](const QString &text) { *value = static_cast<Number>(number(name, text, min, max)); });
}

template <class Value>
void CommandLine::addChoice(const char *name, const QString &help, Value *value,
                            const Choices<Value> &choices)
{
    QStringList names;
    QString preset;
    for (const auto &choice : choices) {
        names += QLatin1String(choice.first);
        if (choice.second == *value)
            preset = names.last();
    }
    const QString all = names.join(QStringLiteral(", "));
    add(name, "name", QStringLiteral("%1: %2 (default: %3).").arg(help, all, preset),
        [=](const QString &text) {
            const int place = names.indexOf(text);
            if (place < 0)
                reject(QStringLiteral("--%1 takes one of %2").arg(QLatin1String(name), all));
            *value = choices.at(place).second;
        });
}

} // namespace Boardsim
