#pragma once

#include "cli/failure.h"
#include "serial/serial_link.h"

#include <QSerialPortInfo>
#include <QString>

/// The ports of this computer, as the user names them.
namespace ports {

/// The port that `given` names: the name or path of one, or the serial number of its adapter. What
/// the system does not list stays as it is. Throws a Failure where several adapters have that
/// number.
QString resolved(const QString &given);

bool isNoneListed();

/// The only port of the system. Throws a Failure where there is none, or a choice.
QString only();

/// Why `port`, of the link `link`, was not opened.
Failure openFailure(const QString &link, const QString &port, OpenFailure reason);

} // namespace ports
