#pragma once

#include <QtGlobal>

/// The ticks, rounded down, that a line of `rate` bit/s takes for `bits`; `rate` is positive.
inline int lineTicks(qint64 bits, int rate)
{
    return static_cast<int>(bits * 1000 / rate);
}
