#include "engine/step_dispatch.h"

#include <limits>

void StepDispatch::add(std::unique_ptr<Step> step)
{
    const int commandType = step->commandType();
    m_steps[commandType] = std::move(step);
}

void StepDispatch::tick()
{
    if (m_session.commandType == commandType::idle) {
        m_session.tick = 0;
        return;
    }
    ++m_session.passed;
    // An exchange without an end may count for weeks.
    if (m_session.tick < std::numeric_limits<int>::max())
        ++m_session.tick;
    if (Step *step = current())
        step->step();
}

void StepDispatch::linkLost(const SerialLink &link)
{
    Step *step = current();
    if (step && &step->link() == &link && !link.isOpen())
        step->fail();
}

Step *StepDispatch::current() const
{
    const auto found = m_steps.find(m_session.commandType);
    return found == m_steps.end() ? nullptr : found->second.get();
}
