#pragma once

#include "cli/project.h"

class Exchanges;

/// The exchanges that bring files to the module, and that ask for what it holds.
namespace transfer {

/// Fills in what the module holds of `units`; `what` is what progress is told of.
void compare(Exchanges &module, const QVector<CrcCheckItem *> &units, const QString &what);

/// Sends the blocks of `file`, counted from its start; what is sent whole needs no count. `what` is
/// what progress is told of.
void send(Exchanges &module, const ProjectFile &file, const QVector<int> &blocks,
          const QString &what);

/// Restarts the system, as the operating system that was sent wants it, and waits until it has
/// started.
void restart(Exchanges &module);

} // namespace transfer
