#include "processend.h"

#include <QWinEventNotifier>

#include <qt_windows.h>
#include <tlhelp32.h>

namespace {

// 0 where the system does not tell.
DWORD starterOf(DWORD process)
{
    HANDLE all = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (all == INVALID_HANDLE_VALUE)
        return 0;
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    bool found = false;
    for (BOOL more = Process32FirstW(all, &entry); more && !found; more = Process32NextW(all, &entry))
        found = entry.th32ProcessID == process;
    CloseHandle(all);
    return found ? entry.th32ParentProcessID : 0;
}

} // namespace

namespace Boardsim {

// The handle is open until this process ends.
ProcessEnd::ProcessEnd(QObject *parent)
    : QObject(parent)
{
    HANDLE starter = OpenProcess(SYNCHRONIZE, FALSE, starterOf(GetCurrentProcessId()));
    if (!starter)
        return;
    auto *watch = new QWinEventNotifier(starter, this);
    connect(watch, &QWinEventNotifier::activated, this, [this, watch] {
        watch->setEnabled(false); // it stays signalled
        emit requested();
    });
}

} // namespace Boardsim
