#include "simulator/stop_signals.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

// A signal handler may do little more than write: the event loop reads the other end of this pipe.
int signalPipe[2];

void onSignal(int)
{
    const char byte = 0;
    // When the pipe is full, an earlier signal has not been read yet, which will do.
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &byte, 1);
}

bool catchSignal(int signal, const struct sigaction &action)
{
    return ::sigaction(signal, &action, nullptr) == 0;
}

/// `nohup` leaves it ignored.
bool isHangUpIgnored()
{
    struct sigaction now = {};
    return ::sigaction(SIGHUP, nullptr, &now) == 0 && now.sa_handler == SIG_IGN;
}

} // namespace

int k7::catchStopSignals()
{
    if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return -1;
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    const bool caught = catchSignal(SIGINT, action) && catchSignal(SIGTERM, action) &&
                        (isHangUpIgnored() || catchSignal(SIGHUP, action));
    return caught ? signalPipe[0] : -1;
}
