#pragma once

#include "app/dialog.h"
#include "simulator/direct_link.h"
#include "simulator/simulator.h"

#include <memory>

/// A window that can open the ports of the module `simulator`, which has been started: devices of
/// the system, or links within the process where there are none.
inline std::unique_ptr<Dialog> simulatedDialog(const k7::Simulator &simulator)
{
    if (!simulator.directWire(simulator.uartPath()))
        return std::make_unique<Dialog>();
    return std::make_unique<Dialog>(Dialog::Links{std::make_unique<k7::DirectLink>(simulator),
                                                  std::make_unique<k7::DirectLink>(simulator)});
}

/// Offers the ports of the module in `dialog`, and uses them.
inline void useModule(Dialog &dialog, const k7::Simulator &simulator)
{
    dialog.offerPorts({simulator.uartPath(), simulator.ed2Path()});
    dialog.usePorts(simulator.uartPath(), simulator.ed2Path());
}
