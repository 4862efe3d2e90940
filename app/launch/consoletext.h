#pragma once

// Text for the console that the program was started from.

#include <QString>

namespace ConsoleText {

// Where there is no console, on Windows, a box shows it.
void print(const QString &text, bool isError);

} // namespace ConsoleText
