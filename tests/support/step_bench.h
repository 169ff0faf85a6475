#pragma once

#include "download/step_dispatch.h"
#include "serial/frame_builder.h"
#include "support/fake_link.h"
#include "support/recording_notices.h"

/// A session whose steps run tick by tick over a link without a device.
struct StepBench
{
    StepBench()
    {
        builder.setHeader(0x5A, 0xA5, false);
        link.whenWritten = [this](const QByteArray &) { writeTicks.append(ticks); };
    }

    /// Adds the step of exchange `type`, made with `arguments` behind those that every step takes.
    template<typename StepClass, typename... Arguments>
    StepClass *add(int type, Arguments &&...arguments)
    {
        auto step = std::make_unique<StepClass>(session, link, notices,
                                                std::forward<Arguments>(arguments)...);
        StepClass *added = step.get();
        dispatch.add(type, std::move(step));
        return added;
    }

    void tick(int times)
    {
        for (int i = 0; i < times; ++i) {
            ++ticks;
            dispatch.tick();
        }
    }

    int ticks = 0;
    QVector<int> writeTicks; // of every write, counted from the start of the bench
    DownloadSession session;
    FrameBuilder builder;
    FakeLink link;
    RecordingNotices notices;
    StepDispatch dispatch{session};
};
