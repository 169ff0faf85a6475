#pragma once

#include <QtGlobal>

#include <functional>

/// Where the time comes from, and how often one looks how much of it has passed.
struct TimeSource
{
    /// That of the system, in nanoseconds from whatever beginning; it never goes back.
    static qint64 ofTheSystem();

    std::function<qint64()> now = ofTheSystem;
    int turn = 1; ///< milliseconds between two looks; 0: each turn of the event loop
};
