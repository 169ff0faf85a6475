#pragma once

#include "simulator/module_state.h"

#include <QString>

namespace k7 {

/// VP address that holds the number of the picture page on the screen.
inline constexpr int picturePageVp = 0x14;

/// Does what the module does when the `count` VP words from `address` on have just been written:
/// certain words are commands. Says what was done, an empty text when the words were mere data.
QString reactToVpWrite(ModuleState &state, int address, int count);

/// Called before `count` VP words from `address` on are read: some are there only after a while.
void reactToVpRead(ModuleState &state, int address, int count);

} // namespace k7
