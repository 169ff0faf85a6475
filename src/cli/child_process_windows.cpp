#include "cli/child_process.h"

#include <windows.h>

namespace {

/// This process and its children become a job, which Windows ends when its only handle goes, with
/// this process.
HANDLE makeJob()
{
    const HANDLE job = ::CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    ::SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    ::AssignProcessToJobObject(job, ::GetCurrentProcess());
    return job;
}

} // namespace

ChildProcess::ChildProcess()
{
    [[maybe_unused]] static const HANDLE job = makeJob();
    // Only a group of its own can be interrupted; its Ctrl-C is the parent's.
    setCreateProcessArgumentsModifier(
        [](CreateProcessArguments *arguments) { arguments->flags |= CREATE_NEW_PROCESS_GROUP; });
}

void ChildProcess::interrupt()
{
    // Without a console there is no Ctrl-C.
    if (!::GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, static_cast<DWORD>(processId())))
        kill();
}

void ChildProcess::setupChildProcess() {}
