#pragma once

#include <QByteArray>
#include <QString>

/// The text form of a configuration file: an INI file, UTF-8, with a key for each thing that the
/// file says, and in its group Raw the bytes that no key tells of. Both ways lose nothing.
namespace cfgText {

/// What comes of a conversion; with a fault, one line in English, nothing else counts.
struct Result
{
    QByteArray bytes;
    QString fault;
};

/// Longer files are refused: a configuration file has 128 bytes.
inline constexpr int maxBytes = 64 * 1024;

/// The text of `image`.
Result fromImage(const QByteArray &image);

/// The file that `text` describes, 128 bytes unless it names another number. Where `base`, another
/// file, is given, what the text does not name stays as it is there. Otherwise it is 0, and layout
/// and rate must be named: no module starts without them.
Result toImage(const QByteArray &text, const QByteArray &base = QByteArray());

} // namespace cfgText
