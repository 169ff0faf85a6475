#pragma once

#include <QString>

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

/// The rate in bit/s at which the link runs when `chosen` was chosen: 115200 for every number that
/// the link does not accept, the offered 230400, 460800 and 921600 among them.
int linkRate(int chosen);

/// The rate in bit/s for computing waits: the chosen one; 115200 when that is no positive number.
int waitRate(int chosen);

void applyToLink(const SerialSettings &settings, SerialLink &link);
