#include "app/desktop.h"

#include <QGuiApplication>

#include <windows.h>

#include <cstdio>

namespace {

/// What is printed appears in the console that the program was started from: a program with windows
/// has none of its own. What goes to a file or a pipe goes there.
void useConsoleOfParent()
{
    const bool isRedirected = ::GetFileType(::GetStdHandle(STD_OUTPUT_HANDLE)) != FILE_TYPE_UNKNOWN;
    if (isRedirected || !::AttachConsole(ATTACH_PARENT_PROCESS))
        return;
    std::freopen("CONOUT$", "w", stdout);
    std::freopen("CONOUT$", "w", stderr);
}

} // namespace

void prepareDesktop()
{
    useConsoleOfParent();
    // Qt would show 125 % as 100 and 150 % as 200, which many screens have no room for.
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
}
