#pragma once

#include <QtGlobal>

#include <functional>

/// Numbers of the exchanges with the module; 0 is none.
namespace commandType {
inline constexpr int idle = 0;
inline constexpr int osDownload = 2;
inline constexpr int readRegister = 7;
inline constexpr int readVp = 8;
inline constexpr int systemReset = 10;
inline constexpr int writeVp = 11;
inline constexpr int writeRegister = 12;
inline constexpr int fontDownload = 13;
inline constexpr int pictureDownload = 14;
inline constexpr int curve = 15;
inline constexpr int freeForm = 16;
inline constexpr int bmpDownload = 17;
inline constexpr int jpgDownload = 18;
inline constexpr int icoDownload = 19;
inline constexpr int pagedBmpDownload = 20;
inline constexpr int crcComparison = 21;
} // namespace commandType

/// The exchange that is running. Something starts one, the heartbeat counts its ticks, its step
/// ends it.
struct DownloadSession
{
    int commandType = commandType::idle;
    int tick = 0;               ///< ticks since the current step began; 0 while idle
    quint32 passed = 0;         ///< ticks of all exchanges, also those at which a step waited
    int repeats = 0;            ///< of the piece that was not answered
    bool replyReceived = false; ///< the module acknowledged; cleared by some steps only
    quint16 writeStart = 0;     ///< first VP address of a write-VP exchange
    quint8 writeCount = 0;      ///< words or register bytes of a write exchange
    quint32 starts = 0;         ///< exchanges started so far, so that the clock sees each of them
    std::function<void()> onStart = [] {}; ///< called when one is

    /// Starts the exchange `type`, in place of the running one if there is one. What it needs must
    /// be prepared before.
    void start(int type)
    {
        tick = 0;
        takeOver(type);
    }

    /// Starts the exchange `type` as well, but goes on counting the ticks of the one it replaces.
    void takeOver(int type)
    {
        commandType = type;
        repeats = 0;
        ++starts;
        onStart();
    }
};
