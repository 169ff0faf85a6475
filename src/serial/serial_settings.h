#pragma once

#include <QString>

#include <array>

class SerialLink;

/// The confirmed settings of one port.
struct SerialSettings
{
    QString portName;   ///< as the system lists it, such as COM3
    int baudRate = 0;   ///< as chosen; the link itself runs at linkRate(baudRate)
    quint8 header1 = 0; ///< first byte of every frame
    quint8 header2 = 0; ///< second byte of every frame
    bool crcEnabled = false;
};

/// The name that opens port `portName`: numbers above 9 behind the first three characters need the
/// device prefix "\\.\". A name that starts with "/" is a path and is used as it stands.
QString devicePath(const QString &portName);

/// The rates in bit/s that the link accepts.
inline constexpr std::array<int, 11> linkRates{1200,  2400,  4800,   9600,   19200,  38400,
                                               56000, 57600, 115200, 128000, 6250000};

/// The rate in bit/s at which the link runs when `chosen` was chosen: 115200 for every number that
/// the link does not accept, the offered 230400, 460800 and 921600 among them.
int linkRate(int chosen);

/// The rate in bit/s for computing waits: the chosen one; 115200 when that is no positive number.
int waitRate(int chosen);

void applyToLink(const SerialSettings &settings, SerialLink &link);
