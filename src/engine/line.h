#pragma once

#include "common/notices.h"
#include "engine/download_session.h"
#include "engine/exchange_reports.h"
#include "serial/frame_builder.h"
#include "serial/reply_receiver.h"
#include "serial/serial_link.h"
#include "serial/serial_settings.h"

class TrafficLog;

/// How strict exchanges are. The default is strict; the window keeps what its users know.
struct StepPolicy
{
    /// Each answer is awaited anew, until it comes or `patience` has passed, and a piece that is
    /// not answered is sent again. Otherwise an answer must have come by its check tick, and one
    /// that came earlier counts until an exchange clears it: later blocks of a download, and a
    /// write after a stopped one, never fail.
    bool awaitsEach = true;
    /// Milliseconds that an answer may take beyond what the line needs.
    int patience = 250;
    /// How often a piece is sent again at most.
    int repeats = 3;
};

/// What the users of the window know. That is wanted.
inline constexpr StepPolicy windowPolicy{false, 0, 0};

/// What a step works with: one link, and what belongs to it. The engine owns all of it.
struct Line
{
    DownloadSession &session;
    SerialLink &link;
    ReplyReceiver &replies; ///< that come over the link
    FrameBuilder &builder;
    Notices &notices;
    TrafficLog &log;
    const SerialSettings &settings; ///< of the link, as they were applied last
    ExchangeReports &reports;
    StepPolicy policy;
};
