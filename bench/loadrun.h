#pragma once

// The real program in a folder of its own, for a run under load: its options and
// its window.

#include "mainwindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTemporaryDir>

#include <optional>

class LoadRun
{
public:
    // Options with a value, and flags.
    LoadRun(int &argc, char **argv, std::initializer_list<const char *> values,
            std::initializer_list<const char *> flags = {});

    bool isSet(const char *option) const { return m_parser.isSet(QLatin1String(option)); }
    QString text(const char *option) const { return m_parser.value(QLatin1String(option)); }
    qint64 number(const char *option) const { return text(option).toLongLong(); }

    MainWindow &window() { return *m_window; }
    void showPage(int index);
    // Where the option "picture" names a file.
    void savePicture();

    static quint16 freePort();

private:
    struct Attributes // set before the application object exists
    {
        Attributes();
    };
    Attributes m_attributes;
    QApplication m_application;
    QCommandLineParser m_parser;
    QTemporaryDir m_root;
    std::optional<MainWindow> m_window;
};
