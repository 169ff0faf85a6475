#pragma once

#include "simulator/module_state.h"

#include <QString>

namespace k7 {

/// What came of a write: what was done, both empty when the words were mere data; or why nothing
/// was.
struct VpReaction
{
    QString done;
    QString refusal;
};

/// Does what a module of `settings` does when the `count` VP words from `address` on have just been
/// written: certain words are commands.
VpReaction reactToVpWrite(ModuleState &state, const ModuleSettings &settings, int address,
                          int count);

/// Called before `count` VP words from `address` on are read: some are there only after a while.
void reactToVpRead(ModuleState &state, const ModuleSettings &settings, int address, int count);

} // namespace k7
