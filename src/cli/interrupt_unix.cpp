#include "cli/interrupt.h"

#include "simulator/stop_signals.h"

#include <QSocketNotifier>

#include <csignal>
#include <poll.h>

namespace {

int signalled = -1;

} // namespace

void interrupt::watch()
{
    if (signalled < 0)
        signalled = k7::catchStopSignals();
    std::signal(SIGPIPE, SIG_IGN); // a failed write tells it
}

void interrupt::request()
{
    if (signalled >= 0)
        std::raise(SIGTERM);
}

bool interrupt::isPending()
{
    // The byte stays in the pipe: once interrupted, always interrupted.
    pollfd descriptor{signalled, POLLIN, 0};
    return signalled >= 0 && poll(&descriptor, 1, 0) > 0;
}

void interrupt::whenPending(QObject *context, const std::function<void()> &wake)
{
    if (signalled < 0)
        return;
    auto *notifier = new QSocketNotifier(signalled, QSocketNotifier::Read, context);
    QObject::connect(notifier, &QSocketNotifier::activated, context, [notifier, wake] {
        notifier->setEnabled(false); // the byte stays
        wake();
    });
}

bool interrupt::waitForInput(int descriptor)
{
    pollfd descriptors[] = {{signalled, POLLIN, 0}, {descriptor, POLLIN, 0}};
    while (poll(descriptors, 2, -1) < 0) {
    }
    return !isPending();
}

bool interrupt::hasInput(int descriptor)
{
    pollfd input{descriptor, POLLIN, 0};
    return poll(&input, 1, 0) > 0;
}
