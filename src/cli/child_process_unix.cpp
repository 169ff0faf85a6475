#include "cli/child_process.h"

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

ChildProcess::ChildProcess() = default;

void ChildProcess::interrupt()
{
    terminate();
}

void ChildProcess::setupChildProcess()
{
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != m_parent) // which has ended already
        ::_exit(1);
}
