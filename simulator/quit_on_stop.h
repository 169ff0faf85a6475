#pragma once

namespace k7 {

/// From now on Ctrl-C, the end of the terminal, and on Unix the request to terminate end the event
/// loop instead of the program, also when they come before it has begun. False when the system
/// refuses. Each system has a file of its own.
bool quitOnStop();

} // namespace k7
