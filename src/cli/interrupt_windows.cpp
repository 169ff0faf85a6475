#include "cli/interrupt.h"

#include <QWinEventNotifier>

#include <io.h>
#include <windows.h>

namespace {

HANDLE interrupted = nullptr; // stays set: once interrupted, always interrupted

BOOL WINAPI onControlEvent(DWORD event)
{
    ::SetEvent(interrupted);
    // Behind the end of the console Windows ends the program when this returns, or in five seconds.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        ::Sleep(INFINITE);
    return TRUE;
}

} // namespace

void interrupt::watch()
{
    if (interrupted)
        return;
    interrupted = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    ::SetConsoleCtrlHandler(onControlEvent, TRUE);
}

void interrupt::request()
{
    if (interrupted)
        ::SetEvent(interrupted);
}

bool interrupt::isPending()
{
    return interrupted && ::WaitForSingleObject(interrupted, 0) == WAIT_OBJECT_0;
}

void interrupt::whenPending(QObject *context, const std::function<void()> &wake)
{
    if (!interrupted)
        return;
    auto *notifier = new QWinEventNotifier(interrupted, context);
    QObject::connect(notifier, &QWinEventNotifier::activated, context, [notifier, wake] {
        notifier->setEnabled(false); // the event stays
        wake();
    });
}

bool interrupt::waitForInput(int descriptor)
{
    // A pipe cannot be waited for together with anything else.
    constexpr DWORD pause = 20; // in milliseconds
    while (descriptor >= 0 && !isPending() && !hasInput(descriptor))
        ::WaitForSingleObject(interrupted, pause);
    return !isPending();
}

bool interrupt::hasInput(int descriptor)
{
    // A file never waits; whoever reads from a terminal is woken by Ctrl-C itself.
    const auto input = reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
    DWORD waiting = 0;
    return ::GetFileType(input) != FILE_TYPE_PIPE ||
           !::PeekNamedPipe(input, nullptr, 0, nullptr, &waiting, nullptr) || waiting > 0;
}
