#pragma once

#include "font/zero_font.h"

/// Makes the zero font size by size while the window goes on. Nothing starts it: it stays idle, and
/// that is wanted.
class StepwiseZeroFont
{
public:
    /// Called on every tick.
    void step();

private:
    static constexpr int ticksPerSize = 500;

    const bool m_isRunning = false;
    GlyphStyle m_style;
    int m_tick = 0;
    int m_size = glyph::minSize;
    QByteArray m_font;
};
