#pragma once

class FrameBuilder;
class Notices;
class ReplyReceiver;
class SerialSet;
class TrafficLog;
struct DownloadSession;

/// What the pages of the window work with. `Dialog` owns all of it, and outlives the pages.
struct PageContext
{
    DownloadSession &session;
    FrameBuilder &builder;
    ReplyReceiver &uartReplies;
    ReplyReceiver &ed2Replies;
    TrafficLog &trafficLog;
    SerialSet &uartSet;
    SerialSet &ed2Set;
    Notices &notices;
};
