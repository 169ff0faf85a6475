#pragma once

#include "common/texts.h"

#include <QByteArray>
#include <QString>
#include <QVector>

/// A unit in which the module stores a file, and what is known of its CRC.
struct CrcCheckItem
{
    // What asks the module for its CRC: 0x5A and the kind of unit, then which one.
    quint16 request = 0;
    quint16 unit = 0;
    QString name;
    QString calculatedCrc;           ///< the tool's, as crcText() gives it
    QString readCrc = "0000";        ///< the module's, once it has answered
    QString compareResult = "false"; ///< "true" when the last answer was equal

    bool isIntact() const { return readCrc == calculatedCrc; }
};

namespace crcCheck {

/// The two bytes of a CRC in the order in which the module shows them, as a number: 0x4B37 is
/// 0x374B.
quint16 swapped(quint16 crc);

/// `number` as the table shows it: upper-case hexadecimal without leading zeros.
QString crcText(quint16 number);

/// The 256 KiB flash blocks of a file that begins in block `number`, and the whole pages of 4 KiB
/// behind the last of them. What follows these is not covered; that is wanted.
QVector<CrcCheckItem> flashUnits(int number, const QString &name, const QByteArray &content);

/// Picture `number` of the module, which holds `pixels` as RGB565.
CrcCheckItem pictureUnit(int number, const QString &name, const QByteArray &pixels);

/// The operating system in the file `content`.
CrcCheckItem systemUnit(const QString &name, const QByteArray &content);

struct Units
{
    QVector<CrcCheckItem> items;
    /// Of a picture that cannot be decoded, which is listed as an empty one: what to tell of it.
    const Text *refusal = nullptr;
};

/// Whether files with the suffix of `name` are checked at all: bin, ICO and bmp, in any case.
bool isChecked(const QString &name);

/// The units of the file `name`, without its folder, that holds `content`. The digits that its name
/// begins with say where the module keeps it. None for a file without a number, but for the
/// operating system, whose name begins with ZOLTOS. Of a numbered bin or ICO file, what follows the
/// last whole 4 KiB is not covered; that is wanted.
Units unitsOf(const QString &name, const QByteArray &content);

} // namespace crcCheck
