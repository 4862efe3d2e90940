#pragma once

// The faces of the program, by what is installed.

#include <QFont>
#include <QString>

namespace Fonts {

// "Microsoft YaHei" where it is installed, otherwise the best CJK face present.
QString uiFamily();

// The monospaced face for received bytes, hexadecimal and addresses, at the
// size of the application font.
QFont monospace();

} // namespace Fonts
