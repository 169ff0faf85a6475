#include "simulator/quit_on_stop.h"

#include <QCoreApplication>

#include <windows.h>

namespace {

/// Windows calls it on a thread of its own.
BOOL WINAPI onControlEvent(DWORD event)
{
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        return FALSE;
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    return TRUE;
}

} // namespace

bool k7::quitOnStop()
{
    return ::SetConsoleCtrlHandler(onControlEvent, TRUE);
}
