#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

#include <optional>

/// Text that the user types as data for the module.
namespace dataText {

/// The bytes of hexadecimal `text`: blanks are skipped, an odd number of digits gets a leading
/// zero. Nothing when it holds any other character.
std::optional<QByteArray> fromHex(const QString &text);

/// The bytes of `text`: hexadecimal digits when `isHex`, else its characters in the local 8-bit
/// encoding.
std::optional<QByteArray> toBytes(const QString &text, bool isHex);

/// The words of `text`, high byte first. Nothing for invalid text or an odd number of bytes.
std::optional<QVector<quint16>> toWords(const QString &text, bool isHex);

} // namespace dataText
