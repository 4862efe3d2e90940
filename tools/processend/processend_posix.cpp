#include "processend.h"

#include <QSocketNotifier>
#include <QTimer>

#include <csignal>
#include <unistd.h>

// Written to by the signal handler, which may do hardly anything else.
static int signalPipe[2] = {-1, -1};

extern "C" {
static void onSignal(int)
{
    const char byte = 0;
    const ssize_t ignored = ::write(signalPipe[1], &byte, 1);
    (void)ignored;
}
}

namespace Boardsim {

ProcessEnd::ProcessEnd(QObject *parent)
    : QObject(parent)
{
    if (::pipe(signalPipe) == 0) {
        auto *notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, this);
        connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
            notifier->setEnabled(false);
            emit requested();
        });
        struct sigaction action = {};
        action.sa_handler = onSignal;
        action.sa_flags = SA_RESTART;
        for (const int signal : {SIGINT, SIGTERM, SIGHUP})
            ::sigaction(signal, &action, nullptr);
    }
    ::signal(SIGPIPE, SIG_IGN); // the reader of our messages may have gone

    auto *watch = new QTimer(this);
    connect(watch, &QTimer::timeout, this, [this, starter = ::getppid()] {
        if (::getppid() != starter)
            emit requested();
    });
    watch->start(500);
}

} // namespace Boardsim
