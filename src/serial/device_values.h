#pragma once

#include <QString>

class FrameBuilder;

/// What the module reports in VP words, as people read it, and the words that people's choices
/// make.
namespace deviceValues {

// Where the values stand in VP memory, and how many words they take.
struct Block
{
    quint16 address;
    quint8 words;
};
inline constexpr Block deviceId{0x0000, 4};
inline constexpr Block version{0x000F, 1};
inline constexpr Block picture{0x0014, 1};
inline constexpr Block voltage{0x0030, 1};
inline constexpr Block sdName{0x007C, 4};
inline constexpr Block config{0x0080, 2};
inline constexpr Block ledConfig{0x0082, 2};

/// The 16 lower-case hexadecimal digits of the device ID.
QString deviceIdText(const FrameBuilder &mirrors);

/// Versions of interface and system: the word 0x4521 gives "GUI:V4.5 OS:V2.1".
QString versionText(const FrameBuilder &mirrors);

/// The supply voltage in millivolts.
int millivolts(const FrameBuilder &mirrors);

/// The folder name on the SD card, up to 8 characters.
QString sdNameText(const FrameBuilder &mirrors);

/// The configuration word that the ids of the four groups make. An id of -1 (nothing checked) for
/// the direction makes it 0xFFFF.
quint16 configWord(int sdStatus, int touchVoice, int touchLight, int displayDirection);

} // namespace deviceValues
