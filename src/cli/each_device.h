#pragma once

#include <QStringList>

class Report;

/// What several devices are to do.
struct SharedWork
{
    QStringList devices;
    QStringList arguments;   ///< of the command line
    QString logFile;         ///< each device's gets its name behind a dot; empty: none
    bool readsInput = false; ///< each reads all of the standard input
};

/// Runs this program once for each of the devices, all at the same time. Their lines get the name
/// of the device in front; at the end a table says how each ended. The exit code is the highest.
int runOnEachDevice(const SharedWork &work, Report &report);
