#include "stopsignal.h"

#include <atomic>
#include <mutex>

#include <qt_windows.h>

namespace {

std::mutex instanceMutex;
StopSignal *instance = nullptr;
std::atomic<bool> isSignalled{false};

// In a thread of the system's.
BOOL WINAPI onControl(DWORD event)
{
    isSignalled = true;
    {
        const std::lock_guard<std::mutex> lock(instanceMutex);
        if (instance)
            QMetaObject::invokeMethod(instance, &StopSignal::requested, Qt::QueuedConnection);
    }
    // When this returns, the process ends; the system waits for 5 s at most.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(INFINITE);
    return TRUE;
}

} // namespace

StopSignal::StopSignal(QObject *parent)
    : QObject(parent)
{
    const std::lock_guard<std::mutex> lock(instanceMutex);
    instance = this;
    SetConsoleCtrlHandler(&onControl, TRUE);
}

StopSignal::~StopSignal()
{
    const std::lock_guard<std::mutex> lock(instanceMutex);
    instance = nullptr;
}

bool StopSignal::isRequested()
{
    return isSignalled;
}
