#pragma once

#include <QStringList>

class Report;

/// Runs this program once for each of `devices`, all at the same time, with `arguments` and that
/// device alone. Their lines get the name of the device in front; at the end a table says how each
/// ended. The exit code is the highest.
int runOnEachDevice(const QStringList &devices, const QStringList &arguments, Report &report);
