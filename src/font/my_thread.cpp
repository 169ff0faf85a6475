#include "font/my_thread.h"

void MyThread::run()
{
    m_output.clear();
    for (m_size = glyph::minSize; m_size <= glyph::maxSize; ++m_size)
        for (ushort code = 0; code < glyph::codes; ++code)
            m_output += glyph::pack(glyph::render(m_size, QChar(code), m_style));
}
