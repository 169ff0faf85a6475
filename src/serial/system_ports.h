#pragma once

#include <QStringList>

/// The names of the ports that the system lists, in its order. Asking takes some 10 ms; any thread
/// may ask.
QStringList systemPorts();
