#pragma once

#include <QDir>

namespace k7 {

class Module;

/// Writes what `module` remembers into `folder`, which is made when it is missing: registers.bin (9
/// pages of 256 bytes), vp.bin (0x10000 words, high byte first), flash_000.bin to flash_255.bin for
/// the blocks that were written, curve_0.txt to curve_7.txt with one sample a line for the channels
/// that have some. False when a file cannot be written.
bool dump(const Module &module, const QDir &folder);

} // namespace k7
