#pragma once

#include <QString>

class FileDialogs;
class FrameBuilder;
class Notices;
class ReplyReceiver;
class SerialLink;
class SerialSet;
class StepDispatch;
class ToolSettings;
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
    SerialLink &uartPort;
    SerialLink &ed2Port;
    SerialSet &uartSet;
    SerialSet &ed2Set;
    Notices &notices;
    FileDialogs &fileDialogs;
    ToolSettings &settings;
    StepDispatch &dispatch;
    const QString &moduleFolder; ///< where the configuration files of the module stand
    const QString &folder;       ///< where the tool keeps its own files
    const bool &isEnglish;       ///< the language of the window at this moment
};
