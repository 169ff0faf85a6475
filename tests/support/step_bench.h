#pragma once

#include "engine/step_dispatch.h"
#include "engine/traffic_log.h"
#include "support/fake_link.h"
#include "support/recording_notices.h"

/// A session whose steps run tick by tick over a link without a device.
struct StepBench
{
    explicit StepBench(const StepPolicy &stepPolicy = windowPolicy) : policy(stepPolicy)
    {
        builder.setHeader(0x5A, 0xA5, false);
        link.whenWritten = [this](const QByteArray &) { writeTicks.append(ticks); };
        QObject::connect(&reports, &ExchangeReports::progressed,
                         [this](int, int percent) { progress.append(percent); });
        QObject::connect(&reports, &ExchangeReports::ended,
                         [this](int, Outcome outcome) { outcomes.append(outcome); });
    }

    /// Adds a step that is made of `arguments`.
    template<typename StepClass, typename... Arguments>
    StepClass *add(Arguments &&...arguments)
    {
        auto step = std::make_unique<StepClass>(std::forward<Arguments>(arguments)...);
        StepClass *added = step.get();
        dispatch.add(std::move(step));
        return added;
    }

    void tick(int times)
    {
        for (int i = 0; i < times; ++i) {
            ++ticks;
            dispatch.tick();
        }
    }

    const StepPolicy policy;
    int ticks = 0;
    QVector<int> writeTicks; // of every write, counted from the start of the bench
    QVector<int> progress;   // in percent
    QVector<Outcome> outcomes;
    DownloadSession session;
    FrameBuilder builder;
    FakeLink link;
    RecordingNotices notices;
    TrafficLog log;
    SerialSettings settings{{}, 115200};
    ReplyReceiver replies{uartReceiveRules, builder, session.replyReceived};
    ExchangeReports reports;
    StepDispatch dispatch{session};
    const Line line{session, link, replies, builder, notices, log, settings, reports, policy};
};
