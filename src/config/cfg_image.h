#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// What a configuration file of the module says, as its page shows it. Choices count from 0 in the
/// order of their buttons.
struct CfgSettings
{
    int layout = 0; ///< 0 to 2 for K7UID1 to K7UID3
    bool formatsFlash = false;
    bool setsCalibration = false; // read only
    int calibration = 0;          // read only

    int autoUp = 0;
    int pageNumber = 0;
    int file22 = 0;
    int sdStatus = 0;
    int touchVoice = 0;
    int touchLight = 0;
    int displayDirection = 0; ///< in quarter turns
    int baudRate = 115200;    ///< in bit/s; 1 at least is written

    bool setsLightStandby = false;
    int normalLight = 0;
    int standbyLight = 0;
    int lightTime = 0;

    bool setsDisplay = false; // read only
    int pclkEdge = 0;         // read only
    QByteArray timing;        ///< 13 bytes; read only, empty when the file sets none

    bool setsBootPage = false;
    int bootPage = 0;
    bool setsBootMusic = false;
    int musicPosition = 0;
    int musicCount = 0;
    int musicVolume = 0;

    bool setsTouchScreen = false; // read only, with all that belongs to it
    int touchType = 0;
    int touchX = 0;
    int touchY = 0;
    int touchExchange = 0;
    int touchSensitivity = 0;

    bool setsTcon = false;
    int tcon = 0;

    int buzzer = 0;
    int uartCrc = 0;
    int watchDog = 0;
    int synchronousUpdate = 0;

    bool checksSdFiles = false;
    int libFiles = 0;
    int binFiles = 0;
    int dzkFiles = 0;
    int hzkFiles = 0;
    int icoFiles = 0;
    int wavFiles = 0;
    int bmpFiles = 0;

    int encryption = 0; ///< 0 not set, 1 lock, 2 unlock
    QString folderName; ///< of the encrypted folder; counts when locked
    QString key;        ///< in hexadecimal; counts when locked
};

/// The configuration file (CFG) of the module: 128 bytes, numbers high byte first.
namespace cfgImage {

inline constexpr int bytes = 128;

enum class Fault { None, FolderNameTooLong, BadKey };

struct Filled
{
    QByteArray image;
    Fault fault;
};

/// `image` with `settings` put in; it grows only as far as they reach. Flags are only ever set in
/// it, never cleared; that is wanted. With a fault it stays as it was. What is read only is not
/// written.
Filled fill(const QByteArray &image, const CfgSettings &settings);

/// Whether `image` begins as configuration files do.
bool isCfg(const QByteArray &image);

/// The layout that `image` is for, 0 to 2; nothing when its digit names none.
std::optional<int> layoutOf(const QByteArray &image);

/// `settings` with all that `image` says; the rest of them stays as it was. Missing bytes count as
/// 0. Bytes are signed, so from 0x80 on they give negative or reduced numbers; that is wanted, and
/// whoever shows them clamps.
CfgSettings read(const QByteArray &image, CfgSettings settings);

} // namespace cfgImage
