#pragma once

#include "simulator/module_state.h"

#include <QImage>

namespace k7 {

/// RGB565 bytes, high byte first, as an image of `size`, row by row. Where there are no bytes it is
/// black, and what lies beyond its last pixel is left out.
QImage unpackPixels(const QByteArray &pixels, const QSize &size);

/// What a module that remembers `state` shows on a screen of `size`, at full light and not turned:
/// the picture of the chosen page, or picture memory when that was written since, and the JPEG
/// pictures over it. What cannot be decoded is not shown.
QImage screenPicture(const ModuleState &state, const QSize &size);

} // namespace k7
