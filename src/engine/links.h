#pragma once

#include "engine/time_source.h"
#include "serial/serial_link.h"

#include <memory>

/// What an engine works on: the links to one module, and the time that it has in common with it.
struct Links
{
    std::unique_ptr<SerialLink> uart;
    std::unique_ptr<SerialLink> ed2;
    TimeSource time{};

    /// Ports of this computer.
    static Links ofTheSystem();
};
