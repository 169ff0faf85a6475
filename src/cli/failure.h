#pragma once

#include "cli/exit_code.h"

#include <QString>

/// Why a command cannot go on. Thrown where it is found out, and told in one place.
struct Failure
{
    ExitCode code;
    QString cause;  ///< one line
    QString remedy; ///< one line; may be empty
};
