#pragma once

// What the help actions open: the manual beside the program where it is
// installed, web addresses otherwise.

#include "apppaths.h"

#include <QFileInfo>
#include <QUrl>

namespace HelpLinks {

const auto helpPage = QStringLiteral("https://www.orvane.example/korvex/help");
const auto makerSite = QStringLiteral("https://www.orvane.example/");

inline QUrl help()
{
    const QString manual = AppPaths::manual();
    return QFileInfo(manual).isFile() ? QUrl::fromLocalFile(manual) : QUrl(helpPage);
}

} // namespace HelpLinks
