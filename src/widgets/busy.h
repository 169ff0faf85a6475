#pragma once

#include "widgets/wait_cursor.h"

#include <QEventLoop>
#include <QFutureWatcher>

/// Waits until `work` is done. Meanwhile the window stays painted and shows that it is busy; what
/// the user does is taken in afterwards.
inline void waitFor(QFuture<void> work)
{
    const WaitCursor busy;
    QEventLoop loop;
    QFutureWatcher<void> watcher;
    QObject::connect(&watcher, &QFutureWatcherBase::finished, &loop, &QEventLoop::quit);
    watcher.setFuture(work);
    if (!work.isFinished())
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    // The loop also ends when the program is told to.
    work.waitForFinished();
}
