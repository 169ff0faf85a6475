#pragma once

#include <QSize>

namespace k7 {

/// What the frames of a link look like.
struct FrameFormat
{
    quint8 header1 = 0x5A;
    quint8 header2 = 0xA5;
    bool crcEnabled = false;
};

/// Which commands of the downloads a module knows: K7UID2 moves pictures into pages, the others
/// into picture memory; K7UID1 counts its flash in units of 32 KiB, the others in blocks of 256
/// KiB.
enum class Layout { K7uid1, K7uid2, K7uid3 };

/// The two links of a module. UART2 takes every command; the fast ED2 link only takes download
/// handshakes and what they announce.
enum class Link { Uart2, Ed2 };

/// What a module is told when it starts.
struct ModuleSettings
{
    /// Of both directions of UART2. On ED2 frames from the tool always start with 5A A5, replies
    /// with the header bytes of `format`, and neither carries a CRC.
    FrameFormat format;
    /// As the tool's window when it opens.
    Layout layout = Layout::K7uid1;
    int uartRate = 115200; ///< bit/s
    QSize screen{480, 272};

    /// The rate in bit/s at which the module listens on `link`.
    int rate(Link link) const { return link == Link::Uart2 ? uartRate : 6250000; }
};

} // namespace k7
