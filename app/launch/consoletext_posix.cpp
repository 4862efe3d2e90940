#include "consoletext.h"

#include <cstdio>

namespace ConsoleText {

void print(const QString &text, bool isError)
{
    FILE *const out = isError ? stderr : stdout;
    std::fputs(text.toUtf8().constData(), out);
    std::fflush(out);
}

} // namespace ConsoleText
