#include "simulator/quit_on_stop.h"

#include "simulator/stop_signals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

bool k7::quitOnStop()
{
    const int signalled = catchStopSignals();
    if (signalled < 0)
        return false;
    auto *stop = new QSocketNotifier(signalled, QSocketNotifier::Read, qApp);
    QObject::connect(stop, &QSocketNotifier::activated, qApp, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    return true;
}
