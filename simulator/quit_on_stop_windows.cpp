#include "simulator/quit_on_stop.h"

#include <QCoreApplication>

#include <windows.h>

namespace {

/// Windows calls it on a thread of its own.
BOOL WINAPI onControlEvent(DWORD event)
{
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    // Behind the end of the console Windows ends the program when this returns, or in five seconds.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        ::Sleep(INFINITE);
    return TRUE;
}

} // namespace

bool k7::quitOnStop()
{
    return ::SetConsoleCtrlHandler(onControlEvent, TRUE);
}
