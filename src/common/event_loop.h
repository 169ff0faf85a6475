#pragma once

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

/// As long as anything is waited for, however busy the computer is.
inline constexpr int longestWait = 180'000; // milliseconds

/// Runs the event loop until `isDone` or, at the latest, for `milliseconds`. It runs at its full
/// pace: waits that sleep between their looks take most of its beats from a heartbeat under them.
template<typename IsDone>
void runEventLoopUntil(IsDone isDone, int milliseconds = longestWait)
{
    if (isDone())
        return;
    QEventLoop loop;
    QElapsedTimer elapsed;
    elapsed.start();
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        if (isDone() || elapsed.elapsed() >= milliseconds)
            loop.quit();
    });
    look.start(1);
    loop.exec();
}

inline void runEventLoop(int milliseconds)
{
    runEventLoopUntil([] { return false; }, milliseconds);
}
