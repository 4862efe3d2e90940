#include "console.h"

#include <QtGlobal>

#include <cstdlib>

#include <qt_windows.h>

namespace {

UINT outputPageBefore = 0;

void restoreOutputPage()
{
    SetConsoleOutputCP(outputPageBefore);
}

bool isConsole(HANDLE stream)
{
    DWORD mode = 0;
    return GetConsoleMode(stream, &mode);
}

// A console hands out characters; Ctrl+Z begins a line that ends the input.
int readConsole(HANDLE input, char *bytes, int size)
{
    constexpr wchar_t ctrlZ = 0x1A;
    constexpr int bytesPerUnit = 3;
    wchar_t units[1024];
    const DWORD wanted = static_cast<DWORD>(qMin(1024, size / bytesPerUnit));
    DWORD count = 0;
    if (!ReadConsoleW(input, units, wanted, &count, nullptr) || count == 0 || units[0] == ctrlZ)
        return 0;
    return WideCharToMultiByte(CP_UTF8, 0, units, static_cast<int>(count), bytes, size, nullptr, nullptr);
}

} // namespace

namespace Console {

void prepare()
{
    outputPageBefore = GetConsoleOutputCP();
    if (outputPageBefore == 0 || outputPageBefore == CP_UTF8)
        return;
    SetConsoleOutputCP(CP_UTF8);
    std::atexit(&restoreOutputPage);
}

Outcome write(const QByteArray &bytes, QString *reason)
{
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    if (output == nullptr || output == INVALID_HANDLE_VALUE)
        return Outcome::Written; // the process was started without one
    const char *next = bytes.constData();
    DWORD left = static_cast<DWORD>(bytes.size());
    while (left > 0) {
        DWORD count = 0;
        if (!WriteFile(output, next, left, &count, nullptr)) {
            const DWORD error = GetLastError();
            if (error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA)
                return Outcome::Closed;
            *reason = error == ERROR_DISK_FULL ? QStringLiteral("磁盘空间不足")
                                               : QStringLiteral("系统错误，代码%1").arg(error);
            return Outcome::Failed;
        }
        next += count;
        left -= count;
    }
    return Outcome::Written;
}

// Writing to a pipe cannot be given up there.
void setDeadline(int)
{
}

int read(char *bytes, int size)
{
    HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    if (input == nullptr || input == INVALID_HANDLE_VALUE)
        return 0;
    if (isConsole(input))
        return readConsole(input, bytes, size);
    DWORD count = 0;
    return ReadFile(input, bytes, static_cast<DWORD>(size), &count, nullptr) ? static_cast<int>(count) : 0;
}

void tellPart(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    DWORD count = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), bytes.constData(), static_cast<DWORD>(bytes.size()), &count,
              nullptr);
}

void tell(const QString &message)
{
    tellPart(message + QLatin1Char('\n'));
}

bool isErrorTerminal()
{
    return isConsole(GetStdHandle(STD_ERROR_HANDLE));
}

} // namespace Console
