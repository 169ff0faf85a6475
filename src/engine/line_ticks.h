#pragma once

#include <QtGlobal>

/// The ticks, rounded down, that a line of `rate` bit/s takes for `bits`; `rate` is positive.
inline int lineTicks(int bits, int rate)
{
    return static_cast<int>(qint64{bits} * 1000 / rate);
}
