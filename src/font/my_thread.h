#pragma once

#include "font/glyph.h"

#include <QThread>

/// Renders the glyphs of the zero font one by one. `Dialog` holds one and never starts it; that is
/// wanted.
class MyThread : public QThread
{
    Q_OBJECT

public:
    using QThread::QThread;

protected:
    void run() override;

private:
    QByteArray m_output;
    GlyphStyle m_style;
    int m_size = glyph::minSize;
};
