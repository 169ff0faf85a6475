#pragma once

#include "ico/icon_record.h"

#include <QVector>

#include <optional>

/// The icon library of the module (ICO): an index of 32768 entries of 8 bytes, then the pixels of
/// the icons without gaps. Addresses in the index count 16-bit words from the start of the file.
namespace icoLibrary {

inline constexpr int entryBytes = 8;
inline constexpr int indexBytes = (IconRecord::maxPosition + 1) * entryBytes;

inline constexpr qint64 maxAddress = 0x0FFFFFFF; ///< 28 bits

/// The index entry of `record` with its pixels at `address`, in words.
QByteArray entryAt(const IconRecord &record, quint32 address);
/// The address in `entry`, in words.
int addressIn(const QByteArray &entry);

/// The library of `records`, pixels in their order. The first record of a position counts;
/// positions that the index does not have are left out. Nothing when an icon would start beyond the
/// 28 bits of an address.
std::optional<QByteArray> write(const QVector<IconRecord> &records);

/// Reads the icons of `file` by their position; their pixels stay in it. False when it is shorter
/// than the index, which leaves `records` as they were, or at the first icon that runs past its
/// end, which leaves those before it. Nothing else is checked: icons may overlap, and have no
/// pixels.
bool read(const QByteArray &file, QVector<IconRecord> &records);

} // namespace icoLibrary
