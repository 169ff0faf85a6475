#include "font/stepwise_zero_font.h"

void StepwiseZeroFont::step()
{
    if (!m_isRunning || ++m_tick < ticksPerSize || m_size > glyph::maxSize)
        return;
    m_tick = 0;
    m_font += glyph::block(m_size, m_style, glyph::codesIn(m_style.font));
    if (m_size++ == glyph::maxSize)
        zeroFont::write(m_folder, m_font);
}
