#pragma once

#include "apppaths.h"
#include "settings.h"

#include <QTemporaryDir>

// The program's folder as after installing it: empty folders, default settings.
// Links Korvex::settings.
class FreshFolder
{
public:
    FreshFolder()
    {
        AppPaths::setRoot(m_folder.path());
        AppPaths::makeFolders();
        Settings::instance() = Settings();
    }
    QString path() const { return m_folder.path(); }
    QString filePath(const QString &name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
};
