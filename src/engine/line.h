#pragma once

#include "common/notices.h"
#include "engine/download_session.h"
#include "engine/exchange_reports.h"
#include "serial/frame_builder.h"
#include "serial/serial_link.h"
#include "serial/serial_settings.h"

class TrafficLog;

/// How strict exchanges are. The default is strict; the window keeps what its users know.
struct StepPolicy
{
    /// Each acknowledgement is awaited anew. Otherwise one that came earlier counts until an
    /// exchange clears it: later blocks of a download, and a write after a stopped one, never fail.
    bool awaitsEach = true;
    /// Outcomes are final before they are told. Otherwise an OS download tells its own first, once
    /// for every tick until then.
    bool settlesFirst = true;
};

/// What a step works with: one link, and what belongs to it. The engine owns all of it.
struct Line
{
    DownloadSession &session;
    SerialLink &link;
    FrameBuilder &builder;
    Notices &notices;
    TrafficLog &log;
    const SerialSettings &settings; ///< of the link, as they were applied last
    ExchangeReports &reports;
    StepPolicy policy;
};
