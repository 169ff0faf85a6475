#pragma once

#include "common/event_loop.h"

#include <QProcess>

/// Waits until `program` has ended, however busy the computer is, and returns its exit code; -1
/// when it crashed. One that does not end ends the test.
inline int exitCodeOf(QProcess &program)
{
    runEventLoopUntil([&] { return program.state() == QProcess::NotRunning; });
    if (program.state() != QProcess::NotRunning)
        qFatal("%s %s does not end", qPrintable(program.program()),
               qPrintable(program.arguments().join(' ')));
    return program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1;
}
