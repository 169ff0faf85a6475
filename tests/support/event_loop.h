#pragma once

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <QtTest>

/// Runs the event loop until `isDone` or, at the latest, for `milliseconds`. It runs at its full
/// pace: QTest's own waits sleep between their looks, and a heartbeat under them loses most of its
/// beats.
template<typename IsDone>
void runEventLoopUntil(IsDone isDone, int milliseconds = 5000)
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

/// QCOMPARE once the two have become equal.
#define COMPARE_SOON(actual, expected)                                                             \
    do {                                                                                           \
        runEventLoopUntil([&] { return (actual) == (expected); });                                 \
        QCOMPARE(actual, expected);                                                                \
    } while (false)
