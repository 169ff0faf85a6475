#pragma once

#include "download/step_dispatch.h"
#include "serial/reply_receiver.h"
#include "simulator/module.h"
#include "support/fake_link.h"
#include "support/recording_notices.h"

/// A session over a link whose other end is the simulated module. Everything happens within the
/// tick that writes.
struct ModuleBench
{
    explicit ModuleBench(bool crc = false) : module(k7::FrameFormat{0x5A, 0xA5, crc})
    {
        builder.setHeader(0x5A, 0xA5, crc);
        replies.setHeader(0x5A, 0xA5);
        link.whenWritten = [this](const QByteArray &bytes) {
            writeTicks.append(ticks);
            for (const QByteArray &reply : module.receive(k7::Link::Uart2, bytes))
                if (answers)
                    replies.receive(reply);
        };
    }

    void tick(int times)
    {
        for (int i = 0; i < times; ++i) {
            ++ticks;
            dispatch.tick();
        }
    }

    bool answers = true;
    int ticks = 0;
    QVector<int> writeTicks; // of every write, counted from the start of the bench
    DownloadSession session;
    FrameBuilder builder;
    ReplyReceiver replies{uartReceiveRules, builder, session.replyReceived};
    k7::Module module;
    FakeLink link;
    RecordingNotices notices;
    StepDispatch dispatch{session};
};
