#pragma once

#include "cli/project.h"

class Connection;

/// The exchanges that bring files to the module, and that ask for what it holds.
namespace transfer {

/// Fills in what the module holds of `units`; `what` is what progress is told of.
void compare(Connection &module, const QVector<CrcCheckItem *> &units, const QString &what);

/// Sends the blocks of `file`, counted from its start; what is sent whole needs no count. After an
/// operating system it waits until the module has started anew.
void send(Connection &module, const ProjectFile &file, const QVector<int> &blocks);

} // namespace transfer
