#pragma once

#include "common/event_loop.h"

#include <QtTest>

/// QCOMPARE once the two have become equal.
#define COMPARE_SOON(actual, expected)                                                             \
    do {                                                                                           \
        runEventLoopUntil([&] { return (actual) == (expected); });                                 \
        QCOMPARE(actual, expected);                                                                \
    } while (false)
