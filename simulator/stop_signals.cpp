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

} // namespace

int k7::catchStopSignals()
{
    if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return -1;
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    const bool caught =
        ::sigaction(SIGINT, &action, nullptr) == 0 && ::sigaction(SIGTERM, &action, nullptr) == 0;
    return caught ? signalPipe[0] : -1;
}
