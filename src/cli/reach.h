#pragma once

#include "engine/links.h"
#include "simulator/adapter.h"

#include <QString>

#include <functional>

/// How a module is reached.
struct Reach
{
    std::function<Links()> links; ///< to the module, where it is not simulated
    bool isSimulated = false;
    k7::Wiring wiring{}; ///< of the simulated module
    QString logFile{};   ///< of all that goes over the links; empty: none
};

/// How long it is waited for.
struct Patience
{
    int answer = 250;   ///< in milliseconds, beyond what the line takes
    int repeats = 3;    ///< of what is not answered
    double seconds = 0; ///< for a port that is absent or in use, or a module that is silent
};
