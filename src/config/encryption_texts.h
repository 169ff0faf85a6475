#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// The folder name and the key of SD-card encryption, as the user types them.
namespace encryptionTexts {

inline constexpr int maxFolderNameBytes = 8;
inline constexpr int keyBytes = 32;

/// What to tell about a text while it is typed; English only, as the module's manual names it.
struct Verdict
{
    QString text;
    bool isGood;
};

/// The bytes of a key in hexadecimal; blanks are skipped. Nothing when `text` holds any other
/// character or an odd number of digits.
std::optional<QByteArray> keyFrom(const QString &text);

/// A good name has at most 8 bytes in the local 8-bit encoding: digits, letters, '-' and '_'.
Verdict checkFolderName(const QString &name);
/// A good key has 32 bytes.
Verdict checkKey(const QString &key);

} // namespace encryptionTexts
