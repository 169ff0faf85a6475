#pragma once

#include "engine/step.h"

#include <map>
#include <memory>

/// Knows the step of every command type and runs the one of the session's exchange.
class StepDispatch
{
public:
    explicit StepDispatch(DownloadSession &session) : m_session(session) {}

    void add(std::unique_ptr<Step> step);

    /// One tick. While idle the tick count stays 0; a command type without a step only counts.
    void tick();

    /// The device behind `link` went away: an exchange that runs on it has failed.
    void linkLost(const SerialLink &link);

private:
    Step *current() const;

    DownloadSession &m_session;
    std::map<int, std::unique_ptr<Step>> m_steps;
};
