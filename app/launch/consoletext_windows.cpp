#include "consoletext.h"

#include <qt_windows.h>

namespace ConsoleText {

// A program with windows has no console of its own, but may have been given a file or a
// pipe.
void print(const QString &text, bool isError)
{
    DWORD written = 0;
    const HANDLE given = GetStdHandle(isError ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    const QByteArray bytes = text.toUtf8();
    if (given && given != INVALID_HANDLE_VALUE && GetFileType(given) != FILE_TYPE_CHAR &&
        WriteFile(given, bytes.constData(), DWORD(bytes.size()), &written, nullptr))
        return;
    const auto *const units = reinterpret_cast<const wchar_t *>(text.utf16());
    if (!AttachConsole(ATTACH_PARENT_PROCESS)) {
        MessageBoxW(nullptr, units, L"Korvex", isError ? MB_ICONERROR : MB_OK);
        return;
    }
    const HANDLE console =
        CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, 0, nullptr);
    WriteConsoleW(console, units, DWORD(text.size()), &written, nullptr);
    CloseHandle(console);
}

} // namespace ConsoleText
