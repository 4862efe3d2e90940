#pragma once

// Web addresses that the help actions open.

#include <QString>

namespace HelpLinks {

const auto helpPage = QStringLiteral("https://www.orvane.example/korvex/help");
const auto makerSite = QStringLiteral("https://www.orvane.example/");

} // namespace HelpLinks
