#pragma once

#include <QMap>
#include <QSize>
#include <QString>

#include <optional>

/// Which commands of the UART2 downloads the module knows.
enum class Model { K7uid1, K7uid2, K7uid3 };

/// A module and how it is reached.
struct Device
{
    struct Port
    {
        QString name; ///< as the system lists it, a path, or the serial number of its adapter
        int rate;     ///< bit/s
    };

    Port uart2{{}, 115200};
    Port ed2{{}, 6250000};
    quint8 header1 = 0x5A;
    quint8 header2 = 0xA5;
    bool crcEnabled = false;
    Model model = Model::K7uid1;
    std::optional<QSize> screen;
    QString id; ///< that the module must have, 16 lower-case digits; empty: any
};

/// Whether both are reached over the same ports.
bool haveSamePorts(const Device &one, const Device &other);

/// What one source, such as the command line or a section of devices.ini, says of a device: texts
/// by the names uart2, ed2, header, crc, model, size, id and device.
using DeviceValues = QMap<QString, QString>;

/// `values` with what `stronger` says in place of theirs.
DeviceValues overlaid(DeviceValues values, const DeviceValues &stronger);

/// Throws a Failure for a value that makes no sense.
Device deviceFrom(const DeviceValues &values);

/// The size that `text`, such as 480x272, names; throws a Failure where it is none.
QSize screenSize(const QString &text);
