#pragma once

#include "config/cfg_image.h"

#include <initializer_list>

/// Where the settings of a configuration file stand in it, and what they are called in its text
/// form: "Group/key".
namespace cfgFields {

inline constexpr char magic[] = "K7D";
inline constexpr int layoutOffset = 3;
inline constexpr int layouts = 3;
inline constexpr int calibrationOffset = 7;
inline constexpr int directionOffset = 8;
inline constexpr int divisorOffset = 9;
inline constexpr int baudClock = 7833600; // of the module's UART2, in Hz
inline constexpr int pclkOffset = 18;
inline constexpr int timingOffset = 19;
inline constexpr int timingBytes = 13;
inline constexpr int encryptionOffset = 64;
inline constexpr int nameLengthOffset = 66;
inline constexpr int nameOffset = 67;
inline constexpr int keyOffset = 80;

inline constexpr int enableMark = 0x5A;
inline constexpr int secondMark = 0xA5;
inline constexpr int unlockMark = 0xAA;

/// A choice between two that is one bit of the file.
struct Flag
{
    const char *name;
    const char *words[2]; ///< for 0 and 1
    int CfgSettings::*value;
    int offset;
    int bit;
};

inline constexpr Flag flags[] = {
    {"Module/autoUpload", {"off", "on"}, &CfgSettings::autoUp, 8, 7},
    {"Module/variablePages", {"64", "128"}, &CfgSettings::pageNumber, 8, 6},
    {"Module/file22", {"skip", "load"}, &CfgSettings::file22, 8, 5},
    {"Module/sdInterface", {"closed", "open"}, &CfgSettings::sdStatus, 8, 4},
    {"Module/touchSound", {"off", "on"}, &CfgSettings::touchVoice, 8, 3},
    {"Module/touchBacklight", {"off", "on"}, &CfgSettings::touchLight, 8, 2},
    {"Module/sound", {"music", "buzzer"}, &CfgSettings::buzzer, 44, 7},
    {"Module/uartCrc", {"off", "on"}, &CfgSettings::uartCrc, 44, 6},
    {"Module/watchdog", {"off", "on"}, &CfgSettings::watchDog, 44, 5},
    {"Module/synchronousUpdate", {"off", "on"}, &CfgSettings::synchronousUpdate, 44, 4},
};

/// Flags of the touch screen, read only.
inline constexpr Flag touchFlags[] = {
    {"Touch/type", {"resistive", "capacitive"}, &CfgSettings::touchType, 40, 7},
    {"Touch/x", {"normal", "reversed"}, &CfgSettings::touchX, 40, 2},
    {"Touch/y", {"normal", "reversed"}, &CfgSettings::touchY, 40, 1},
    {"Touch/axes", {"xy", "yx"}, &CfgSettings::touchExchange, 40, 0},
};

struct Number
{
    const char *name;
    int CfgSettings::*value;
    int offset;
    int bytes;
};

/// Settings that count only behind their marks.
struct Option
{
    const char *name;
    bool CfgSettings::*isOn;
    int offset;
    int marks; ///< 1: enableMark; 2: secondMark behind it
    bool isReadOnly;
    std::initializer_list<Number> numbers;
};

inline const Option options[] = {
    {"Flash/format", &CfgSettings::formatsFlash, 4, 2, false, {}},
    {"Calibration/set", &CfgSettings::setsCalibration, 6, 1, true, {}},
    {"Backlight/set",
     &CfgSettings::setsLightStandby,
     11,
     1,
     false,
     {{"Backlight/normal", &CfgSettings::normalLight, 12, 1},
      {"Backlight/standby", &CfgSettings::standbyLight, 13, 1},
      {"Backlight/seconds", &CfgSettings::lightTime, 14, 2}}},
    {"Display/set", &CfgSettings::setsDisplay, 16, 2, true, {}},
    {"StartPage/set",
     &CfgSettings::setsBootPage,
     32,
     1,
     false,
     {{"StartPage/page", &CfgSettings::bootPage, 33, 2}}},
    {"StartMusic/set",
     &CfgSettings::setsBootMusic,
     35,
     1,
     false,
     {{"StartMusic/position", &CfgSettings::musicPosition, 36, 1},
      {"StartMusic/count", &CfgSettings::musicCount, 37, 1},
      {"StartMusic/volume", &CfgSettings::musicVolume, 38, 1}}},
    {"Touch/set",
     &CfgSettings::setsTouchScreen,
     39,
     1,
     true,
     {{"Touch/sensitivity", &CfgSettings::touchSensitivity, 41, 1}}},
    {"Tcon/set", &CfgSettings::setsTcon, 42, 1, false, {{"Tcon/value", &CfgSettings::tcon, 43, 1}}},
    {"FileCheck/set",
     &CfgSettings::checksSdFiles,
     48,
     2,
     false,
     {{"FileCheck/lib", &CfgSettings::libFiles, 50, 1},
      {"FileCheck/bin", &CfgSettings::binFiles, 51, 1},
      {"FileCheck/dzk", &CfgSettings::dzkFiles, 52, 1},
      {"FileCheck/hzk", &CfgSettings::hzkFiles, 53, 1},
      {"FileCheck/ico", &CfgSettings::icoFiles, 54, 1},
      {"FileCheck/wav", &CfgSettings::wavFiles, 55, 1},
      {"FileCheck/bmp", &CfgSettings::bmpFiles, 56, 1}}},
};

} // namespace cfgFields
