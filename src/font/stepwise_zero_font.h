#pragma once

#include "font/zero_font.h"

/// Makes the zero font size by size while the window goes on. Nothing starts it: it stays idle, and
/// that is wanted.
class StepwiseZeroFont
{
public:
    /// The font goes to `folder`.
    explicit StepwiseZeroFont(const QString &folder) : m_folder(folder) {}

    /// Called on every tick.
    void step();

private:
    static constexpr int ticksPerSize = 500;

    const QString m_folder;
    const bool m_isRunning = false;
    GlyphStyle m_style;
    int m_tick = 0;
    int m_size = glyph::minSize;
    QByteArray m_font;
};
