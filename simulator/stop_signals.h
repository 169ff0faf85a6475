#pragma once

namespace k7 {

/// A descriptor that becomes readable when the program is interrupted or terminated, or its
/// terminal goes away; -1 when there can be none.
int catchStopSignals();

} // namespace k7
