#pragma once

#include "simulator/flash.h"
#include "simulator/module_settings.h"
#include "simulator/staging_area.h"

#include <QMap>
#include <QSet>
#include <QVector>

#include <array>

namespace k7 {

inline constexpr int registerPages = 9;
inline constexpr int registersPerPage = 256;
inline constexpr int vpWords = 0x10000;
inline constexpr int curveChannels = 8;

// Words of VP memory that are more than words.
inline constexpr int picturePageVp = 0x14; ///< number of the picture page on the screen
inline constexpr int configVp = 0x81;      ///< its lowest two bits: display direction
inline constexpr int lightVp = 0x82;       ///< backlight, normal and in standby, in percent
inline constexpr int lightTimeVp = 0x83;   ///< seconds until standby; 0: never

/// What the module plays: `count` pieces of music from number `position` on, all values 0 to 255.
/// Nothing is played while `count` is 0.
struct Music
{
    int position = 0;
    int count = 0;
    int volume = 0;
};

/// A JPEG picture that was sent: what was staged, and where it is.
struct ShownJpeg
{
    QByteArray content;
    bool isStored = false; ///< under the picture ID `first`, not on the screen at `first`, `second`
    int first = 0;
    int second = 0;
};

/// Everything a display module remembers. A new one has the device's ID, version, name, voltage and
/// settings in its VP words.
struct ModuleState
{
    ModuleState();

    std::array<quint8, registerPages * registersPerPage> registers{};
    QVector<quint16> vp; // always the full 0x10000 words
    StagingArea staging;
    QVector<quint16> lastMove{}; ///< the words of the command that emptied it last
    int systemWords = 0;         ///< of a system file, sent since its first word
    Flash flash;
    /// Downloaded pictures by their number, as RGB565 bytes, and which of them came in chunks.
    QMap<int, QByteArray> pictures;
    QSet<int> pagedPictures;
    /// Picture memory without pages, from its first word on.
    QByteArray pictureMemory;
    bool showsMemory = false;          ///< it was written after the page was chosen
    ShownJpeg jpeg;                    ///< the last one
    QVector<ShownJpeg> overlays;       ///< JPEG pictures over the page, the newest last
    QMap<int, QByteArray> storedJpegs; ///< by picture ID; newer than the picture of that number
    std::array<QVector<quint16>, curveChannels> curves;
    Music music;
    /// How often a CRC is asked for in vain before it is there; and how often the next one still
    /// is.
    int busyReads = 0;
    int crcReadsLeft = -1;     // none was asked for
    quint8 systemArgument = 0; // of the last system command
    bool isRestartAnnounced = false;
    int resets = 0;
    int restarts = 0;
    int programmingTime = 0;    ///< milliseconds that the last command keeps the flash busy
    bool isScreenStale = false; ///< the last command changed what the screen shows
};

} // namespace k7
