#pragma once

#include "serial/reply_receiver.h"
#include "simulator/module.h"
#include "support/step_bench.h"

/// A session over a link whose other end is the simulated module. Everything happens within the
/// tick that writes.
struct ModuleBench : StepBench
{
    explicit ModuleBench(bool crc = false, const StepPolicy &stepPolicy = windowPolicy)
        : StepBench(stepPolicy), module(k7::ModuleSettings{{0x5A, 0xA5, crc}})
    {
        builder.setHeader(0x5A, 0xA5, crc);
        replies.setHeader(0x5A, 0xA5, crc);
        link.whenWritten = [this](const QByteArray &bytes) {
            writeTicks.append(ticks);
            for (const QByteArray &reply : module.receive(k7::Link::Uart2, bytes, ticks))
                if (answers && !drops(count++))
                    replies.receive(reply);
        };
    }

    bool answers = true;
    std::function<bool(int reply)> drops = [](int) { return false; }; // counted from 0
    int count = 0;
    k7::Module module;
};
