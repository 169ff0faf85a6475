#pragma once

#include <QVector>

#include <array>

/// How the display controller drives a screen of one size.
struct ScreenTiming
{
    static constexpr int bytes = 14;

    const char *size; ///< as the user chooses it
    /// Byte 0 is the PCLK edge: 0 falling, else rising. The others are the bytes of the
    /// configuration file as they stand.
    std::array<quint8, bytes> record;
};

/// The sizes of a layout, 0 to 2 for K7UID1 to K7UID3, in the order in which they are offered; none
/// for any other.
QVector<ScreenTiming> screenTimings(int layout);
