#include "stopsignal.h"

#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

// The handler may do hardly anything else than write to it.
static int signalPipe[2] = {-1, -1};
static volatile std::sig_atomic_t isSignalled = 0;

extern "C" {
static void onSignal(int)
{
    isSignalled = 1;
    const char byte = 0;
    const ssize_t ignored = ::write(signalPipe[1], &byte, 1);
    (void)ignored;
}
}

StopSignal::StopSignal(QObject *parent)
    : QObject(parent)
{
    if (::pipe(signalPipe) != 0)
        return;
    for (const int end : signalPipe) {
        ::fcntl(end, F_SETFL, O_NONBLOCK);
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
    }
    auto *notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        if (::read(signalPipe[0], &byte, 1) == 1)
            emit requested();
    });
    // Without SA_RESTART: a write that waits for its reader ends.
    struct sigaction action = {};
    action.sa_handler = onSignal;
    for (const int signal : {SIGINT, SIGTERM})
        ::sigaction(signal, &action, nullptr);
    struct sigaction hangUp = {};
    if (::sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN) // "nohup"
        ::sigaction(SIGHUP, &action, nullptr);
}

StopSignal::~StopSignal() = default; // a later signal finds no notifier, and changes nothing

bool StopSignal::isRequested()
{
    return isSignalled != 0;
}
