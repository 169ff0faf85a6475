#pragma once

#include "app/dialog.h"
#include "simulator/direct_link.h"
#include "simulator/simulator.h"

#include <memory>

/// A window that can open the ports of the module `simulator`, which has been started: devices of
/// the system, or links within the process where there are none. Both have their time from `time`.
inline std::unique_ptr<Dialog> simulatedDialog(const k7::Simulator &simulator,
                                               const k7::SharedTime &time)
{
    const bool isDirect = simulator.directWire(simulator.uartPath()) != nullptr;
    Links links = isDirect ? k7::directLinks(simulator) : Links::ofTheSystem();
    links.time = k7::timeOf(time);
    return std::make_unique<Dialog>(std::move(links));
}

/// Offers the ports of the module in `dialog`, and uses them.
inline void useModule(Dialog &dialog, const k7::Simulator &simulator)
{
    dialog.offerPorts({simulator.uartPath(), simulator.ed2Path()});
    dialog.usePorts(simulator.uartPath(), simulator.ed2Path());
}
