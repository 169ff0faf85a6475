#pragma once

#include <functional>

class QObject;

/// Ctrl-C, the signal to terminate, and the end of the terminal.
namespace interrupt {

/// From now on they are noticed instead of ending the program at once.
void watch();
bool isPending();
/// Calls `wake` when they come, as long as `context` lives.
void whenPending(QObject *context, const std::function<void()> &wake);
/// As if it came from outside; nothing before watch().
void request();
/// Waits until `descriptor` can be read, or has ended; not at all without one, which is below 0.
/// False when it is interrupted before.
bool waitForInput(int descriptor);
/// Whether `descriptor` can be read at once, or has ended.
bool hasInput(int descriptor);

} // namespace interrupt
